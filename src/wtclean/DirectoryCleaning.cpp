#include "wtclean/DirectoryCleaning.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string_view>
#include <utility>

#include "fio/np_fio_work.h"
#include "wtclean/ElementNames.h"
#include "wtelem/messages.h"

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t earliest = std::numeric_limits<std::int64_t>::min();

std::int64_t currentTime() noexcept {
  using std::chrono::nanoseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<nanoseconds>(now).count();
}

std::int64_t before(std::int64_t time, std::int64_t age) noexcept {
  return time < earliest + age ? earliest : time - age;
}

/// The last moment that a time may stand for: some file systems cut times to seconds, or to two.
std::int64_t latestOf(std::int64_t time) noexcept {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() - 2 * second;
  return time % second == 0 && time < most ? time + 2 * second : time;
}

bool isCatalogueName(std::string_view name) noexcept {
  return fileNames::isOf(fileNames::tablePrefix, name);
}

static_assert(fileNames::sizeOf(npFioWorkPrefix) <= fileNames::sizeOf(fileNames::indexPrefix));

bool isWorkName(std::string_view name) noexcept { return fileNames::isOf(npFioWorkPrefix, name); }

bool isOtherName(std::string_view name) noexcept {
  return isWorkName(name) || fileNames::isOf(fileNames::dataPrefix, name) ||
         fileNames::isOf(fileNames::indexPrefix, name);
}

/// True when nothing is there any more, or nothing that is this user's to remove.
bool isNotOurs(int status) noexcept {
  return status == npFioNotFound || status == npFioNotRegular || status == npFioAccessDenied ||
         status == npFioReadOnlyMedium;
}

ZvbString openingFailure(const char* path, int status) noexcept {
  const char* description = np_fio_errdesc(status);
  return description != nullptr ? WT_MESSAGE(openFailed, path, description)
                                : WT_MESSAGE(openFailedStatus, path, status);
}

}  // namespace

DirectoryCleaning::DirectoryCleaning(const TempDirectories& directories, std::int64_t leastAge,
                                     bool remove, ZvwtOrphanTaker taker, void* context) noexcept
    : directories_(directories),
      leastAge_(std::clamp<std::int64_t>(leastAge, 0, std::numeric_limits<std::int32_t>::max()) *
                second),
      remove_(remove),
      taker_(taker),
      context_(context) {}

bool DirectoryCleaning::run() noexcept {
  now_ = currentTime();
  if (!list(false, &files_) || !list(true, &catalogues_) || !readCatalogues()) {
    return false;
  }
  keepYoungFiles();
  const bool judgesAll = hasOrphans();
  for (const File& catalogue : catalogues_) {
    char path[npFioPathSize];
    if ((judgesAll || catalogue.isUnfinished) && joinPath(catalogue, path) &&
        !judgeCatalogue(path)) {
      return false;
    }
  }
  for (const File& file : files_) {
    if (!file.isKept && !isOver_) {
      takeFile(file);
    }
  }
  return true;
}

bool DirectoryCleaning::fail(ZvbString text) noexcept {
  error_ = std::move(text);
  return false;
}

// ---- Listing

struct DirectoryCleaning::Listing {
  Files* files;
  bool catalogues;
  std::int32_t directory;
  bool isComplete;
};

/// What is found is sorted by its name.
bool DirectoryCleaning::list(bool catalogues, Files* files) noexcept {
  for (int i = 0; i < directories_.count(); ++i) {
    Listing listing = {
        .files = files, .catalogues = catalogues, .directory = i, .isComplete = true};
    const int status = np_fio_list(directories_.path(i), takeName, &listing);
    if (status != npFioSuccess) {
      return fail(openingFailure(directories_.path(i), status));
    }
    if (!listing.isComplete) {
      return fail(WT_MESSAGE(outOfMemory, "(list of files)"));
    }
  }
  std::sort(files->begin(), files->end(), [](const File& left, const File& right) {
    return std::string_view(left.name) < right.name;
  });
  dropRepeated(files);
  return true;
}

/// A directory may stand in the list twice, under one path or several. Files that only have the
/// same name stay: one may be a copy, and each catalogue keeps what it names.
void DirectoryCleaning::dropRepeated(Files* files) const noexcept {
  File* end = files->begin();
  for (const File& file : *files) {
    const File* other = end;
    bool isRepeated = false;
    while (!isRepeated && other != files->begin() &&
           std::string_view((other - 1)->name) == file.name) {
      --other;
      isRepeated = isSame(*other, file);
    }
    if (!isRepeated) {
      *end++ = file;
    }
  }
  files->truncate(static_cast<std::size_t>(end - files->begin()));
}

bool DirectoryCleaning::isSame(const File& left, const File& right) const noexcept {
  char leftPath[npFioPathSize];
  char rightPath[npFioPathSize];
  np_fio_stat leftInfo;
  np_fio_stat rightInfo;
  return joinPath(left, leftPath) && joinPath(right, rightPath) &&
         np_fio_stat64(leftPath, &leftInfo) == npFioSuccess &&
         np_fio_stat64(rightPath, &rightInfo) == npFioSuccess &&
         leftInfo.device == rightInfo.device && leftInfo.number == rightInfo.number;
}

bool DirectoryCleaning::takeName(const char* name, void* listing) noexcept {
  auto& to = *static_cast<Listing*>(listing);
  if (to.catalogues ? isCatalogueName(name) : isOtherName(name)) {
    File file;
    std::strncpy(file.name, name, sizeof file.name - 1);
    file.directory = to.directory;
    to.isComplete = to.files->append(file);
  }
  return to.isComplete;
}

/// Files in a directory whose path is too long are not made by this library.
bool DirectoryCleaning::joinPath(const File& file, char (&path)[npFioPathSize]) const noexcept {
  return np_fio_pcat(directories_.path(file.directory), file.name, path, sizeof path) ==
         npFioSuccess;
}

// ---- Catalogues

/// Damage is told of when it matters.
bool DirectoryCleaning::readCatalogues() noexcept {
  for (File& catalogue : catalogues_) {
    char path[npFioPathSize];
    if (!joinPath(catalogue, path)) {
      continue;
    }
    np_fio_handle file = nullptr;
    const int status = np_fio_open(path, npFioRead, &file);
    if (status != npFioSuccess && !isNotOurs(status)) {
      return fail(openingFailure(path, status));
    }
    CatalogueKind kind = CatalogueKind::damaged;
    const bool isRead = file == nullptr || readNames(path, file, &kind);
    np_fio_close(file);
    if (!isRead) {
      return false;
    }
    catalogue.isUnfinished = kind == CatalogueKind::unfinished;
  }
  return true;
}

/// Keeps the files that a catalogue names. False: not what is in it is wrong, but reading it is.
bool DirectoryCleaning::readNames(const char* path, np_fio_handle file,
                                  CatalogueKind* kind) noexcept {
  *kind = readElementNames(file, keepNamed, this);
  const int status = np_fio_status(file);
  return status == npFioSuccess || fail(openingFailure(path, status));
}

void DirectoryCleaning::keepNamed(const char* name, void* cleaning) noexcept {
  Files& files = static_cast<DirectoryCleaning*>(cleaning)->files_;
  File* const first = std::lower_bound(
      files.begin(), files.end(), std::string_view(name),
      [](const File& file, std::string_view wanted) { return file.name < wanted; });
  for (File* file = first; file != files.end() && std::string_view(file->name) == name; ++file) {
    file->isKept = true;
  }
}

void DirectoryCleaning::keepYoungFiles() noexcept {
  for (File& file : files_) {
    char path[npFioPathSize];
    np_fio_stat info;
    file.isKept = file.isKept || !joinPath(file, path) ||
                  np_fio_stat64(path, &info) != npFioSuccess || !info.isRegular ||
                  !isOldEnough(info.modifiedTime);
  }
}

bool DirectoryCleaning::hasOrphans() noexcept {
  return std::any_of(files_.begin(), files_.end(),
                     [](const File& file) { return !file.isKept && !isWorkName(file.name); });
}

/// False ends the cleaning.
bool DirectoryCleaning::judgeCatalogue(const char* path) noexcept {
  np_fio_handle file = nullptr;
  int status = np_fio_open(path, npFioOnlyWriter, &file);
  if (status == npFioInUse) {
    noteWriter(path);
    return true;
  }
  if (status == npFioReadOnlyMedium) {  // nobody writes there
    status = np_fio_open(path, npFioRead, &file);
  }
  if (status == npFioAccessDenied) {
    return hideOwner(path);
  }
  if (status != npFioSuccess) {
    return isNotOurs(status) || fail(openingFailure(path, status));
  }
  const bool judged = judgeUnlocked(path, file);
  np_fio_close(file);
  return judged;
}

/// Of a catalogue that nobody writes.
bool DirectoryCleaning::judgeUnlocked(const char* path, np_fio_handle file) noexcept {
  np_fio_stat info;
  const int status = np_fio_stat64(path, &info);
  if (status != npFioSuccess) {
    return status == npFioNotFound || fail(openingFailure(path, status));
  }
  CatalogueKind kind = CatalogueKind::damaged;
  if (!readNames(path, file, &kind)) {
    return false;
  }
  switch (kind) {
    case CatalogueKind::whole:
      break;
    case CatalogueKind::unfinished:
      if (isOldEnough(info.modifiedTime) && !isOver_) {
        removeLocked(path, info);
      }
      break;
    case CatalogueKind::damaged:
      isAnyNamed_ = true;
      report(path, info, "the catalogue is damaged, and element files that it may name are kept");
      break;
  }
  return true;
}

/// What is younger than a table that is being written may be one of its files.
void DirectoryCleaning::noteWriter(const char* path) noexcept {
  std::int64_t made = 0;
  const int status = np_fio_madeTime(path, &made);
  if (status != npFioNotFound) {
    oldestWriter_ = std::min(oldestWriter_, status == npFioSuccess ? made : earliest);
  }
}

/// A catalogue that this user may not write is not written for this user either: it can only own
/// files of its own owner.
bool DirectoryCleaning::hideOwner(const char* path) noexcept {
  np_fio_stat info;
  const int status = np_fio_stat64(path, &info);
  if (status != npFioSuccess) {
    return status == npFioNotFound || fail(openingFailure(path, status));
  }
  return isHidden(info.owner) || hiddenOwners_.append(info.owner) ||
         fail(WT_MESSAGE(outOfMemory, "(list of files)"));
}

bool DirectoryCleaning::isHidden(std::uint32_t owner) const noexcept {
  return std::find(hiddenOwners_.begin(), hiddenOwners_.end(), owner) != hiddenOwners_.end();
}

// ---- Other files

void DirectoryCleaning::takeFile(const File& file) noexcept {
  const bool isWorkFile = isWorkName(file.name);
  char path[npFioPathSize];
  if ((isAnyNamed_ && !isWorkFile) || !joinPath(file, path)) {
    return;
  }
  np_fio_stat info;
  np_fio_handle locked = nullptr;
  int status = np_fio_open(path, npFioOnlyWriter, &locked);
  if (status == npFioSuccess) {
    status = np_fio_stat64(path, &info);
  }
  std::int64_t made = earliest;
  if (status == npFioSuccess && !isHidden(info.owner)) {
    (void)np_fio_madeTime(path, &made);
    if (isOldEnough(info.modifiedTime) &&
        (isWorkFile || isOlderThanWriters(std::max(info.modifiedTime, made)))) {
      removeLocked(path, info);
    }
  } else if (status != npFioSuccess && status != npFioInUse && !isNotOurs(status)) {
    report(path, {}, openingFailure(path, status).asCstr());
  }
  np_fio_close(locked);
}

bool DirectoryCleaning::isOldEnough(std::int64_t time) const noexcept {
  return time <= before(now_, leastAge_);
}

bool DirectoryCleaning::isOlderThanWriters(std::int64_t time) const noexcept {
  return latestOf(time) < before(oldestWriter_, leastAge_);
}

/// Removes a file that is locked here, if it is to be removed, and tells of it.
void DirectoryCleaning::removeLocked(const char* path, const np_fio_stat& info) noexcept {
  const int status = remove_ ? np_fio_unlink(path) : npFioSuccess;
  if (status == npFioSuccess) {
    report(path, info, nullptr);
  } else if (status != npFioNotFound) {
    report(path, info, WT_MESSAGE(deleteFailed, np_fio_errdesc(status)).asCstr());
  }
}

void DirectoryCleaning::report(const char* path, const np_fio_stat& info,
                               const char* problem) noexcept {
  const ZvwtOrphan orphan = {.path = path,
                             .size = info.size,
                             .modifiedTime = info.modifiedTime,
                             .owner = info.owner,
                             .problem = problem};
  isOver_ = isOver_ || (taker_ != nullptr && !taker_(&orphan, context_));
}
