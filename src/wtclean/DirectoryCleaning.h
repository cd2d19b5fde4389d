/// Finds the files that killed processes have left in a manager's directories, and removes them.
///
/// Whoever creates a table or appends to one holds a lock on its catalogue from before the first
/// new element file until the catalogue names them all; it dies with the process. So an element
/// file is left over when no catalogue names it and no catalogue is locked that is as old as it is.
/// This is sure only in this order: first the element files are listed; then the catalogues, each
/// of which was there before the files that are its own; then each catalogue is found locked, or is
/// read while nobody else can lock it. What a table that is closed meanwhile has left the first
/// list with, it had under a lock when its catalogue was looked at.
///
/// To lock a catalogue keeps its appenders away for a moment. So all catalogues are read without a
/// lock first, and only when files remain that none of them names are they locked.
///
/// A new file is locked as soon as it is made, and its name is given up when it was not the first
/// to lock it (np_fio_tmpfile); an element file that is being written is locked, too.
///
/// Thread rule: used by the thread that makes the cleaning.
#pragma once

#include <cstdint>
#include <limits>

#include "base/ZvbArray.h"
#include "base/ZvbString.h"
#include "fio/TempDirectories.h"
#include "fio/np_fio.h"
#include "wtclean/ElementNames.h"
#include "wtelem/FileNames.h"
#include "zvwt.h"

class DirectoryCleaning {
 public:
  /// `leastAge` is in seconds. `taker` may be null.
  DirectoryCleaning(const TempDirectories& directories, std::int64_t leastAge, bool remove,
                    ZvwtOrphanTaker taker, void* context) noexcept;

  /// False with a text in error() when it cannot be told what is left over; then nothing but
  /// catalogues has been removed.
  [[nodiscard]] bool run() noexcept;
  [[nodiscard]] const ZvbString& error() const noexcept { return error_; }

 private:
  static constexpr int nameRoom = fileNames::sizeOf(fileNames::indexPrefix);  // of the longest

  struct File {
    char name[nameRoom] = "";
    std::int32_t directory = 0;
    bool isKept = false;        // a catalogue names it, or it is too young
    bool isUnfinished = false;  // a catalogue without a header
  };
  using Files = ZvbArray<File>;
  struct Listing;

  bool fail(ZvbString text) noexcept;
  bool list(bool catalogues, Files* files) noexcept;
  static bool takeName(const char* name, void* listing) noexcept;
  void dropRepeated(Files* files) const noexcept;
  [[nodiscard]] bool isSame(const File& left, const File& right) const noexcept;
  [[nodiscard]] bool joinPath(const File& file, char (&path)[npFioPathSize]) const noexcept;

  bool readCatalogues() noexcept;
  bool readNames(const char* path, np_fio_handle file, CatalogueKind* kind) noexcept;
  void keepYoungFiles() noexcept;
  [[nodiscard]] bool hasOrphans() noexcept;
  bool judgeCatalogue(const char* path) noexcept;
  bool judgeUnlocked(const char* path, np_fio_handle file) noexcept;
  void noteWriter(const char* path) noexcept;
  bool hideOwner(const char* path) noexcept;
  void takeFile(const File& file) noexcept;
  void removeLocked(const char* path, const np_fio_stat& info) noexcept;
  void report(const char* path, const np_fio_stat& info, const char* problem) noexcept;

  static void keepNamed(const char* name, void* cleaning) noexcept;
  [[nodiscard]] bool isHidden(std::uint32_t owner) const noexcept;
  [[nodiscard]] bool isOldEnough(std::int64_t time) const noexcept;
  [[nodiscard]] bool isOlderThanWriters(std::int64_t time) const noexcept;

  const TempDirectories& directories_;
  std::int64_t leastAge_;  // nanoseconds, as all times
  bool remove_;
  ZvwtOrphanTaker taker_;
  void* context_;
  ZvbString error_;
  std::int64_t now_ = 0;

  Files files_;  // of elements and sorts, by name
  Files catalogues_;
  ZvbArray<std::uint32_t> hiddenOwners_;  // of catalogues that cannot be looked at
  std::int64_t oldestWriter_ = std::numeric_limits<std::int64_t>::max();
  bool isAnyNamed_ = false;  // a damaged catalogue may name any file
  bool isOver_ = false;      // the taker wants no more
};
