#pragma once

// Descriptors 0, 1 and 2.

namespace platform {

/// Opens /dev/null for every standard stream that the program was started without. Otherwise the next file
/// that it opens would get that number, and output would go into the file. Writing to a standard output that
/// was missing still fails. Call it first.
void fillStandardStreams();

}  // namespace platform
