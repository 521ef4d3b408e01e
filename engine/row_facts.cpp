#include "engine/row_facts.h"

#include <utility>

namespace dunmere {

RowFacts RowFactFinder::factsOf(std::string_view name, EntryKind kind, const Counted& counted) {
  switch (kind) {
    case EntryKind::symbolicLink:
      return linkFacts(name, counted);
    case EntryKind::folder:
      return {true, false, counted.value_or(0)};
    case EntryKind::regularFile:
      // The scan's own answer spares a column of counted files every look at the disk.
      return {false, false, counted ? *counted : bytesOnDisk(name)};
    case EntryKind::other:
      return {};
  }
  std::unreachable();
}

std::int64_t RowFactFinder::bytesOnDisk(std::string_view name) {
  const auto attributes = folder_.attributes(name);
  return attributes && attributes->kind == EntryKind::regularFile ? attributes->countedBytes() : 0;
}

RowFacts RowFactFinder::linkFacts(std::string_view name, const Counted& counted) {
  const LinkTarget target = folder_.resolveLink(name);
  RowFacts facts{false, true, 0};
  if (!target.attributes) return facts;
  // The target's own entry or, should the link's name have been a file or folder when it was scanned, the name's.
  const auto ofTarget = linkTargets_.find(target.url.key());
  const Counted& bytes = ofTarget ? ofTarget : counted;
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
