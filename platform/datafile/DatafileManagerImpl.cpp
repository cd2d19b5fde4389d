#include "datafile/DatafileManagerImpl.h"

#include <algorithm>
#include <new>
#include <utility>

#include "datafile/DatafileSorterImpl.h"
#include "datafile/messages.h"

namespace {

constexpr std::uint32_t knownOptions =
    zvDatafileTypedColumns | zvDatafileWorkFiles | zvDatafileKeepEqual;

zvbType knownType(zvbType type) noexcept {
  return type >= zvbTypeBoolean && type <= zvbTypeDate ? type : zvbTypeString;
}

}  // namespace

ZvDatafileManager* zvDatafileManagerCreate(const ZvbString& directoryList,
                                           ZvbString* error) noexcept {
  std::unique_ptr<DatafileManagerImpl> manager(new (std::nothrow)
                                                   DatafileManagerImpl(directoryList));
  if (manager == nullptr || manager->memoryShort()) {
    *error = DATAFILE_MESSAGE(outOfMemory, "(datafile manager)");
    return nullptr;
  }
  return manager.release();
}

bool DatafileManagerImpl::fail(ZvbString text) noexcept {
  error_ = std::move(text);
  return false;
}

// ---- Settings

bool DatafileManagerImpl::check(const char* setting, std::int64_t value,
                                const SettingRange& range) noexcept {
  return range.takes(value) || fail(DATAFILE_MESSAGE(settingRefused, setting, value, range.text));
}

bool DatafileManagerImpl::sortAndSize0(std::int64_t value) noexcept {
  if (!check("0, memory for one sort", value, settingRange::memory)) {
    return false;
  }
  settings_.memory = value == 0 ? SortSettings().memory : value;
  return true;
}

bool DatafileManagerImpl::sortAndSize1(bool value) noexcept {
  settings_.secondThread = value;
  return true;
}

bool DatafileManagerImpl::sortAndSize2(bool value) noexcept {
  settings_.ignoreCase = value;
  return true;
}

bool DatafileManagerImpl::sortAndSize3(bool value) noexcept {
  settings_.spread = value;
  return true;
}

bool DatafileManagerImpl::sortAndSize4(std::int32_t value) noexcept {
  if (!check("4, runs merged at once", value, settingRange::runsMergedAtOnce)) {
    return false;
  }
  settings_.runsMergedAtOnce = value;
  return true;
}

bool DatafileManagerImpl::sortAndSize5(std::int64_t value) noexcept {
  if (!check("5, work file limit", value, settingRange::workFileLimit)) {
    return false;
  }
  settings_.workFileLimit = value;
  return true;
}

bool DatafileManagerImpl::sortAndSize6(std::int64_t value) noexcept {
  if (!check("6, read buffer", value, settingRange::readBuffer)) {
    return false;
  }
  settings_.readBuffer = value;
  return true;
}

bool DatafileManagerImpl::sortAndSize7(bool value) noexcept {
  settings_.checksums = value;
  return true;
}

void DatafileManagerImpl::setProgress(ZvDatafileSortCallback callback, void* context) noexcept {
  callback_ = callback;
  context_ = context;
}

// ---- Records and sorters

bool DatafileManagerImpl::setColumnCount(std::int32_t count) noexcept {
  if (count < 0) {
    return fail(DATAFILE_MESSAGE(columnCountRefused, int{count}));
  }
  const auto size = static_cast<std::size_t>(count);
  std::unique_ptr<zvbType[]> types(new (std::nothrow) zvbType[size]);
  if (types == nullptr) {
    return fail(DATAFILE_MESSAGE(outOfMemory, "(sort columns)"));
  }
  std::fill_n(types.get(), size, zvbTypeString);
  columnTypes_ = std::move(types);
  columnCount_ = count;
  return true;
}

bool DatafileManagerImpl::defineColumn(std::int32_t column, zvbType type,
                                       std::int32_t /*size*/) noexcept {
  if (column < 0 || column >= columnCount_) {
    return fail(DATAFILE_MESSAGE(noSuchColumn, int{column}, int{columnCount_}));
  }
  columnTypes_[static_cast<std::size_t>(column)] = knownType(type);
  return true;
}

ZvDatafileSorter* DatafileManagerImpl::createSorter(std::uint32_t options) noexcept {
  if ((options & ~knownOptions) != 0) {
    (void)fail(DATAFILE_MESSAGE(optionsRefused, std::int64_t{options & ~knownOptions}));
    return nullptr;
  }
  SorterSetup setup = {.settings = settings_,
                       .callback = callback_,
                       .context = context_,
                       .directoryList = directoryList_,
                       .columnTypes = columnTypes_.get(),
                       .columnCount = static_cast<std::size_t>(columnCount_)};
  setup.settings.mayUseWorkFiles = (options & zvDatafileWorkFiles) != 0;
  setup.settings.keepEqual = (options & zvDatafileKeepEqual) != 0;
  std::unique_ptr<zvbType[]> texts;
  if ((options & zvDatafileTypedColumns) == 0) {
    texts.reset(new (std::nothrow) zvbType[setup.columnCount]);
    if (texts != nullptr) {
      std::fill_n(texts.get(), setup.columnCount, zvbTypeString);
    }
    setup.columnTypes = texts.get();
  }
  const bool hasTypes = setup.columnTypes != nullptr || setup.columnCount == 0;
  std::unique_ptr<DatafileSorterImpl> sorter = hasTypes ? DatafileSorterImpl::make(setup) : nullptr;
  if (sorter == nullptr) {
    (void)fail(DATAFILE_MESSAGE(outOfMemory, "(sorter)"));
  }
  return sorter.release();
}
