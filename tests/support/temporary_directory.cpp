#include "tests/support/temporary_directory.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tests {

TemporaryDirectory::TemporaryDirectory() {
    std::string name = std::filesystem::temp_directory_path() / "brightledger-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace tests
