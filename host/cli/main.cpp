// brightledger: the widget host and its command line.

#include "host/cli/command_line.h"

int main(int count, char** words) { return host::runCommandLine(count, words); }
