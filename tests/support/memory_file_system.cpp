#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace dunmere::test {

namespace {

SweepError failure(std::string path, std::errc code) {
  return {SweepAttempt::openFolder, FileUrl(std::move(path)), std::make_error_code(code), {}};
}

/// What the folder's own directory read tells of an entry; none when the entry is left out.
std::optional<EntryAttributes> listedAttributes(const MemoryNode& node, EntryDetail detail) {
  switch (detail) {
    case EntryDetail::kinds: {
      EntryAttributes kindOnly;
      if (!node.attributesHidden) kindOnly.kind = node.attributes.kind;
      return kindOnly;
    }
    case EntryDetail::sizes:
      // As a directory read tells it: a file's sizes are to be asked for, and only then is it found out that they are
      // hidden.
      if (node.attributes.kind == EntryKind::regularFile) return EntryAttributes{.kind = EntryKind::regularFile};
      if (node.attributesHidden) return std::nullopt;
      return node.attributes;
  }
  std::unreachable();
}

}  // namespace

class MemoryFileSystem::Folder : public OpenFolder {
 public:
  Folder(MemoryFileSystem& fileSystem, std::shared_ptr<const Anchor> anchor, MemoryNode& node, EntryDetail detail)
      : fileSystem_(fileSystem), anchor_(std::move(anchor)), node_(node), detail_(detail) {}

  std::optional<FolderStamp> stamp() override {
    const std::lock_guard lock(fileSystem_.mutex_);
    if (!fileSystem_.stampsGiven_) return std::nullopt;
    return FolderStamp{.folder = reinterpret_cast<std::uintptr_t>(&node_),
                       .changed = std::chrono::nanoseconds(node_.folder->version)};
  }

  std::expected<void, SweepError> readEntries(EntryBatch& batch) override {
    batch.clear();
    std::shared_ptr<const Hook> hook;
    {
      const std::lock_guard lock(fileSystem_.mutex_);
      fill(batch);
      if (batch.empty() && failsNow()) return std::unexpected(failure(path(), std::errc::io_error));
      hook = fileSystem_.readHook_;
    }
    if (hook) (*hook)(path());
    return {};
  }

  std::expected<void, SweepError> measure(EntryBatch& batch) override {
    std::shared_ptr<const Hook> hook;
    {
      const std::lock_guard lock(fileSystem_.mutex_);
      hook = fileSystem_.measureHook_;
    }
    if (hook) (*hook)(path());
    const std::lock_guard lock(fileSystem_.mutex_);
    const auto isFile = [](const auto& entry) { return entry.attributes.kind == EntryKind::regularFile; };
    if (node_.folder->unmeasurable && std::ranges::any_of(batch.entries(), isFile))
      return std::unexpected(failure(path(), std::errc::io_error));
    for (std::size_t position = 0; position < batch.size(); ++position) {
      const EntryBatch::Entry& entry = batch.entries()[position];
      if (entry.attributes.kind != EntryKind::regularFile) continue;
      if (detail_ == EntryDetail::kinds) fileSystem_.attributeReads_.push_back(logged(batch.name(entry)));
      const MemoryNode* node = node_.child(batch.name(entry));
      const bool isReadable = node && !node->attributesHidden && node->attributes.kind == EntryKind::regularFile;
      batch.setAttributes(position, isReadable ? node->attributes : EntryAttributes{.kind = EntryKind::other});
    }
    return {};
  }

  std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view name) override {
    const LoggedPath child = logged(name);
    fileSystem_.logOpening(child);
    const std::lock_guard lock(fileSystem_.mutex_);
    MemoryNode* node = node_.child(name);
    if (!node) return std::unexpected(failure(spell(child), std::errc::no_such_file_or_directory));
    if (!node->folder) return std::unexpected(failure(spell(child), std::errc::not_a_directory));
    if (node->folder->unreadable) return std::unexpected(failure(spell(child), std::errc::permission_denied));
    return std::make_shared<Folder>(fileSystem_, anchor_, *node, EntryDetail::sizes);
  }

  bool takesDiskSpace() override {
    const std::lock_guard lock(fileSystem_.mutex_);
    return node_.folder->takesDiskSpace;
  }

  std::optional<EntryAttributes> attributes(std::string_view name) override {
    const std::lock_guard lock(fileSystem_.mutex_);
    fileSystem_.attributeReads_.push_back(logged(name));
    const MemoryNode* node = node_.child(name);
    if (!node || node->attributesHidden) return std::nullopt;
    return node->attributes;
  }

  LinkTarget resolveLink(std::string_view name) override {
    const std::lock_guard lock(fileSystem_.mutex_);
    const auto target = fileSystem_.tree_.resolve(node_, std::string(name));
    if (!target) return {FileUrl(spell(logged(name))).standardized(), std::nullopt};
    LinkTarget result{FileUrl(fileSystem_.tree_.pathOf(**target)), std::nullopt};
    if (!(*target)->attributesHidden) result.attributes = (*target)->attributes;
    return result;
  }

 private:
  std::string path() const { return MemoryTree::pathBelow(*anchor_->node, anchor_->path, node_); }
  LoggedPath logged(std::string_view name) const { return {anchor_, &node_, std::string(name)}; }
  bool failsNow() const { return node_.folder->failsAfter && taken_ >= *node_.folder->failsAfter; }

  void fill(EntryBatch& batch) {
    const std::vector<MemoryNode*>& children = node_.folder->children;
    while (batch.size() < fileSystem_.batchSize_ && !failsNow() && next_ < children.size()) {
      const MemoryNode* child = children[next_++];
      if (!child) continue;
      ++taken_;
      if (const auto attributes = listedAttributes(*child, detail_)) batch.add(child->name, *attributes);
    }
  }

  MemoryFileSystem& fileSystem_;
  const std::shared_ptr<const Anchor> anchor_;
  MemoryNode& node_;
  const EntryDetail detail_;
  std::size_t next_ = 0;   // in the folder's children
  std::size_t taken_ = 0;  // entries passed so far
};

MemoryFileSystem::MemoryFileSystem() = default;
MemoryFileSystem::~MemoryFileSystem() = default;

void MemoryFileSystem::addFolder(const std::string& path) {
  const std::lock_guard lock(mutex_);
  tree_.add(path, EntryKind::folder);
}

void MemoryFileSystem::addFile(const std::string& path, std::int64_t allocatedBytes) {
  EntryAttributes attributes;
  attributes.allocatedBytes = allocatedBytes;
  addFile(path, attributes);
}

void MemoryFileSystem::addFile(const std::string& path, const EntryAttributes& attributes) {
  const std::lock_guard lock(mutex_);
  MemoryNode& node = tree_.add(path, EntryKind::regularFile);
  node.attributes = attributes;
  node.attributes.kind = EntryKind::regularFile;
}

void MemoryFileSystem::addLink(const std::string& path, const std::string& target) {
  const std::lock_guard lock(mutex_);
  MemoryNode& node = tree_.add(path, EntryKind::symbolicLink);
  node.linkTarget = target;
  node.attributes.logicalBytes = static_cast<std::int64_t>(target.size());
}

void MemoryFileSystem::addOther(const std::string& path) {
  const std::lock_guard lock(mutex_);
  tree_.add(path, EntryKind::other);
}

template <typename Change>
void MemoryFileSystem::changeFolder(const std::string& path, Change change) {
  const std::lock_guard lock(mutex_);
  MemoryNode& node = tree_.at(path);
  if (!node.folder) throw std::invalid_argument("not a folder: " + path);
  change(node);
}

void MemoryFileSystem::markPackage(const std::string& path) {
  changeFolder(path, [](MemoryNode& node) { node.attributes.isPackage = true; });
}

void MemoryFileSystem::makeUnreadable(const std::string& path) {
  changeFolder(path, [](MemoryNode& node) { node.folder->unreadable = true; });
}

void MemoryFileSystem::takeNoDiskSpace(const std::string& path) {
  changeFolder(path, [](MemoryNode& node) { node.folder->takesDiskSpace = false; });
}

void MemoryFileSystem::makeReadable(const std::string& path) {
  changeFolder(path, [](MemoryNode& node) { node.folder->unreadable = false; });
}

void MemoryFileSystem::failReadingAfter(const std::string& path, std::size_t entries) {
  changeFolder(path, [entries](MemoryNode& node) {
    node.folder->failsAfter = entries;
    ++node.folder->version;
  });
}

void MemoryFileSystem::failMeasuring(const std::string& path) {
  changeFolder(path, [](MemoryNode& node) { node.folder->unmeasurable = true; });
}

void MemoryFileSystem::hideAttributes(const std::string& path) {
  const std::lock_guard lock(mutex_);
  MemoryNode& node = tree_.at(path);
  node.attributesHidden = true;
  ++node.parent->folder->version;
}

void MemoryFileSystem::remove(const std::string& path) {
  const std::lock_guard lock(mutex_);
  tree_.remove(path);
}

void MemoryFileSystem::setStamps(bool given) {
  const std::lock_guard lock(mutex_);
  stampsGiven_ = given;
}

void MemoryFileSystem::setBatchSize(std::size_t entries) {
  if (entries == 0) throw std::invalid_argument("a batch holds at least one entry");
  const std::lock_guard lock(mutex_);
  batchSize_ = entries;
}

void MemoryFileSystem::setMountedVolumes(std::optional<std::vector<FileUrl>> volumes) {
  const std::lock_guard lock(mutex_);
  mountedVolumes_ = std::move(volumes);
}

void MemoryFileSystem::setVolumeValues(const std::string& path, std::optional<VolumeValues> values) {
  const std::lock_guard lock(mutex_);
  volumeValues_[FileUrl(path).key()] = std::move(values);
}

void MemoryFileSystem::setHome(const std::string& path) {
  const std::lock_guard lock(mutex_);
  home_ = FileUrl(path);
}

void MemoryFileSystem::setClock(Instant now) {
  const std::lock_guard lock(mutex_);
  clock_ = now;
}

void MemoryFileSystem::advanceClock(Instant by) {
  const std::lock_guard lock(mutex_);
  clock_ += by;
}

void MemoryFileSystem::setClockStep(Instant step) {
  const std::lock_guard lock(mutex_);
  clockStep_ = step;
}

std::vector<std::string> MemoryFileSystem::openedFolders() const {
  const std::lock_guard lock(mutex_);
  return spellAll(openedFolders_);
}

std::vector<std::string> MemoryFileSystem::attributeReads() const {
  const std::lock_guard lock(mutex_);
  return spellAll(attributeReads_);
}

std::vector<std::string> MemoryFileSystem::measuredVolumes() const {
  const std::lock_guard lock(mutex_);
  return measuredVolumes_;
}

int MemoryFileSystem::utilityPriorityThreads() const {
  return utilityPriorityThreads_;
}

void MemoryFileSystem::onOpen(Hook hook) {
  const std::lock_guard lock(mutex_);
  openHook_ = hook ? std::make_shared<const Hook>(std::move(hook)) : nullptr;
}

void MemoryFileSystem::onRead(Hook hook) {
  const std::lock_guard lock(mutex_);
  readHook_ = hook ? std::make_shared<const Hook>(std::move(hook)) : nullptr;
}

void MemoryFileSystem::onMeasure(Hook hook) {
  const std::lock_guard lock(mutex_);
  measureHook_ = hook ? std::make_shared<const Hook>(std::move(hook)) : nullptr;
}

std::expected<std::shared_ptr<OpenFolder>, SweepError> MemoryFileSystem::openFolder(const FileUrl& url,
                                                                                    EntryDetail detail) {
  auto anchor = std::make_shared<Anchor>(Anchor{nullptr, url.path()});
  logOpening({anchor, nullptr, {}});
  const std::lock_guard lock(mutex_);
  const auto node = tree_.resolve(url.bytes());
  if (!node) return std::unexpected(failure(url.bytes(), node.error()));
  if (!(*node)->folder) return std::unexpected(failure(url.bytes(), std::errc::not_a_directory));
  if ((*node)->folder->unreadable) return std::unexpected(failure(url.bytes(), std::errc::permission_denied));
  anchor->node = *node;
  return std::make_shared<Folder>(*this, std::move(anchor), **node, detail);
}

std::optional<std::vector<VolumeMount>> MemoryFileSystem::mountedVolumes() {
  const std::lock_guard lock(mutex_);
  if (!mountedVolumes_) return std::nullopt;
  std::vector<VolumeMount> volumes;
  for (const FileUrl& url : *mountedVolumes_) volumes.push_back({url, url.lastPathComponent(), {}});
  return volumes;
}

std::expected<VolumeValues, SweepError> MemoryFileSystem::volumeValues(const FileUrl& url) {
  const std::lock_guard lock(mutex_);
  measuredVolumes_.push_back(url.path());
  auto found = volumeValues_.find(url.key());
  for (FileUrl folder = url.standardized(); found == volumeValues_.end() && folder.bytes().size() > 1;) {
    folder = folder.deletingLastPathComponent();
    found = volumeValues_.find(folder.bytes());
  }
  if (found == volumeValues_.end() || !found->second) return std::unexpected(failure(url.bytes(), std::errc::io_error));
  return *found->second;
}

FileUrl MemoryFileSystem::homeFolder() {
  const std::lock_guard lock(mutex_);
  return home_;
}

FileSystem::Instant MemoryFileSystem::now() {
  const std::lock_guard lock(mutex_);
  return std::exchange(clock_, clock_ + clockStep_);
}

std::string MemoryFileSystem::nameSortKey(std::string_view name) {
  std::string key(name);
  for (char& c : key) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return key;
}

void MemoryFileSystem::enterUtilityPriority() noexcept {
  ++utilityPriorityThreads_;
}

std::string MemoryFileSystem::spell(const LoggedPath& logged) {
  if (!logged.folder) return logged.anchor->path;
  const std::string folder = MemoryTree::pathBelow(*logged.anchor->node, logged.anchor->path, *logged.folder);
  return FileUrl(folder).appending(logged.name).bytes();
}

std::vector<std::string> MemoryFileSystem::spellAll(const std::vector<LoggedPath>& log) {
  std::vector<std::string> paths;
  paths.reserve(log.size());
  for (const LoggedPath& logged : log) paths.push_back(spell(logged));
  return paths;
}

void MemoryFileSystem::logOpening(const LoggedPath& logged) {
  std::shared_ptr<const Hook> hook;
  {
    const std::lock_guard lock(mutex_);
    openedFolders_.push_back(logged);
    hook = openHook_;
  }
  if (hook) (*hook)(spell(logged));
}

}  // namespace dunmere::test
