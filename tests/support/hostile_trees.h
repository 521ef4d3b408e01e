// hostileTrees: real trees, by name, that a scan, a listing or a pane could stumble over.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/machine.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {

struct HostileTree {
  std::string name;
  /// Fills an empty tree. For a child process: it may mount something, which ends with the process.
  std::function<void(const TemporaryTree& tree)> build;
  std::int64_t fileCount = 0;  ///< regular files that a scan counts
  bool readByNobody = false;   ///< meant for a user without any rights, who cannot read all of it
  bool isLarge = false;        ///< for the folder in memory only
  std::optional<Feature> needs = {};
};

inline std::ostream& operator<<(std::ostream& out, const HostileTree& tree) {
  return out << tree.name;
}

/// All of them, each with a name that is an identifier.
const std::vector<HostileTree>& hostileTrees();

}  // namespace dunmere::test
