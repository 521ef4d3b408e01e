// Any content of a Trash's file of sizes: only lines of folders are kept, and a line of the new folder is last.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/linux/directory_sizes.h"
#include "tests/fuzz/require.h"

namespace dunmere::test {
namespace {

void check(std::string_view text) {
  const DirectorySize added{.bytes = 4096, .recorded = 1735689599, .name = "new"};
  const auto isThere = [](const std::string& name) {
    require(!name.empty() && name.find('/') == std::string::npos, "a folder has a name");
    require(name.find('\0') == std::string::npos, "a name has no end within");
    return true;
  };
  const std::string sizes = directorySizesWith(text, added, isThere);
  require(sizes.ends_with("4096 1735689599 new\n"), "the new folder has a line");
  require(directorySizesWith(sizes, added, isThere) == sizes, "what was written reads the same");
  require(directorySizesWith(text, added, [](const std::string&) { return false; }) == "4096 1735689599 new\n",
          "what is not there has no line");
}

}  // namespace
}  // namespace dunmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dunmere::test::check(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}
