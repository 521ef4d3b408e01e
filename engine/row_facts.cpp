#include "engine/row_facts.h"

#include <utility>

namespace dunmere {

RowFacts RowFactFinder::factsOf(std::string_view name, EntryKind kind, const Bytes& bytes) {
  switch (kind) {
    case EntryKind::symbolicLink:
      return linkFacts(name, bytes);
    case EntryKind::folder:
      return {true, false, bytes.value_or(0)};
    case EntryKind::regularFile:
      return {false, false, bytes.value_or(0)};
    case EntryKind::other:
      return {};
  }
  std::unreachable();
}

RowFacts RowFactFinder::linkFacts(std::string_view name, const Bytes& ofName) {
  const LinkTarget target = folder_.resolveLink(name);
  RowFacts facts{false, true, 0};
  if (!target.attributes) return facts;
  // The target's own entry or, should the link's name have been a file or folder when it was scanned, the name's.
  const auto ofTarget = linkTargets_.find(target.url.key());
  const Bytes& bytes = ofTarget ? ofTarget : ofName;
  switch (target.attributes->kind) {
    case EntryKind::folder:
      facts.isDirectory = true;
      facts.sizeBytes = bytes.value_or(0);
      break;
    case EntryKind::regularFile:
      facts.sizeBytes = bytes.value_or(target.attributes->countedBytes());
      break;
    case EntryKind::symbolicLink:
    case EntryKind::other:
      break;
  }
  return facts;
}

}  // namespace dunmere
