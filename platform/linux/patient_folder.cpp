#include "platform/linux/patient_folder.h"

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

namespace dunmere {

namespace {

SweepError failure(FileUrl url, int error) {
  return {.attempt = SweepAttempt::openFolder,
          .path = std::move(url),
          .code = std::error_code(error, std::generic_category()),
          .volumeName = {}};
}

struct Opened {
  std::shared_ptr<LinuxOpenFolder> folder;
  bool isLocal = false;
};

}  // namespace

std::expected<std::shared_ptr<OpenFolder>, SweepError> PatientFolder::open(FolderDescriptors& descriptors,
                                                                           Patience& patience, LocalMounts& localMounts,
                                                                           const FileUrl& url) {
  if (auto folder = LinuxOpenFolder::openAtOnce(descriptors, url, EntryDetail::kinds, localMounts))
    return std::make_shared<PatientFolder>(patience, url, std::move(folder), true);
  using Answer = std::expected<Opened, SweepError>;
  const auto question = [&descriptors, &localMounts, url]() -> Answer {
    auto folder = LinuxOpenFolder::open(descriptors, url, EntryDetail::kinds);
    if (!folder) return std::unexpected(std::move(folder.error()));
    const bool isLocal = (*folder)->isLocal();
    if (isLocal) (*folder)->addMountTo(localMounts);
    return Opened{*std::move(folder), isLocal};
  };
  auto answer = patience.ask<Answer>(url.bytes(), question);
  if (!answer) return std::unexpected(failure(url, answer.error()));
  if (!*answer) return std::unexpected(std::move(answer->error()));
  return std::make_shared<PatientFolder>(patience, url, std::move((*answer)->folder), (*answer)->isLocal);
}

/// Throws std::bad_alloc when the memory ran out on the thread that was asked, as if it had on this one.
template <typename Answer>
std::expected<Answer, int> PatientFolder::askPatiently(const std::string& place, std::function<Answer()> question) {
  auto answer = patience_.ask<Answer>(place, std::move(question));
  if (!answer && answer.error() == ENOMEM) throw std::bad_alloc();
  return answer;
}

template <typename Answer>
std::expected<Answer, int> PatientFolder::ask(std::function<Answer()> question) {
  if (isLocal_) return question();
  return askPatiently<Answer>(url_.bytes(), std::move(question));
}

/// Asks for what `fill` makes of `batch`: of a copy, since an answer that comes too late must not find the batch gone.
std::expected<void, SweepError> PatientFolder::askToFill(Fill fill, EntryBatch& batch) {
  using Answer = std::expected<EntryBatch, SweepError>;
  if (isLocal_) return (*folder_.*fill)(batch);
  auto answer = askPatiently<Answer>(url_.bytes(), [folder = folder_, fill, entries = batch]() mutable -> Answer {
    if (auto filled = (*folder.*fill)(entries); !filled) return std::unexpected(std::move(filled.error()));
    return std::move(entries);
  });
  if (!answer) return std::unexpected(failure(url_, answer.error()));
  if (!*answer) return std::unexpected(std::move(answer->error()));
  batch = std::move(**answer);
  return {};
}

std::expected<void, SweepError> PatientFolder::readEntries(EntryBatch& batch) {
  batch.clear();
  return askToFill(&OpenFolder::readEntries, batch);
}

std::expected<void, SweepError> PatientFolder::measure(EntryBatch& batch) {
  return askToFill(&OpenFolder::measure, batch);
}

std::optional<FolderStamp> PatientFolder::stamp() {
  return isLocal_ ? folder_->stamp() : std::nullopt;
}

std::expected<std::shared_ptr<OpenFolder>, SweepError> PatientFolder::openChild(std::string_view name) {
  using Answer = std::expected<std::shared_ptr<OpenFolder>, SweepError>;
  auto answer = ask<Answer>([folder = folder_, child = std::string(name)] { return folder->openChild(child); });
  return answer ? *std::move(answer) : std::unexpected(failure(url_.appending(name), answer.error()));
}

std::optional<EntryAttributes> PatientFolder::attributes(std::string_view name) {
  if (isLocal_) return folder_->attributes(name);
  using Answer = std::optional<EntryAttributes>;
  const auto answer = ask<Answer>([folder = folder_, entry = std::string(name)] { return folder->attributes(entry); });
  return answer.value_or(std::nullopt);
}

LinkTarget PatientFolder::resolveLink(std::string_view name) {
  if (isLocal_) {
    if (auto target = folder_->knownLinkTarget(name)) return *std::move(target);
  }
  // A place of its own: links that lead nowhere must not keep their folder from being listed again.
  auto answer = askPatiently<LinkTarget>(
      url_.bytes() + "/", [folder = folder_, link = std::string(name)] { return folder->resolveLink(link); });
  return answer ? *std::move(answer) : LinkTarget{url_.appending(name).standardized(), std::nullopt};
}

}  // namespace dunmere
