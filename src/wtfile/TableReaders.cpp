/// The openers for reading, each with its way to select columns, and the URI that stands for what
/// was opened.

#include <memory>

#include "base/ZvURI.h"
#include "base/ZvWorkTableURI.h"
#include "wtelem/messages.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

struct Release {
  template <typename Object>
  void operator()(Object* object) const noexcept {
    object->release();
  }
};
using ReadHandle = std::unique_ptr<ZvURI, Release>;
using BuiltHandle = std::unique_ptr<ZvWorkTableURI, Release>;

}  // namespace

bool ZVWTFileImpl::openFromURI(const ZvbString& text, bool backwards) noexcept {
  bool memoryShort = false;
  const ReadHandle uri(getURIFromURIString(text, &memoryShort));
  if (memoryShort) {
    return fail(WT_MESSAGE(outOfMemory, "(work table URI)"));
  }
  if (uri == nullptr) {
    return openWithColumnNames(text, -1, nullptr, nullptr, backwards);
  }
  if (uri->getScheme().compare("zvwt", false) != 0) {
    return fail(WT_MESSAGE(otherScheme, uri->getScheme().asCstr()));
  }
  RowRange range;
  const bool hasRange = uri->getRowRange(&range.firstRow, &range.rowCount);
  const ZvbString path = uri->getPath();
  if (path.memoryShort()) {
    return fail(WT_MESSAGE(outOfMemory, "(file path)"));
  }
  return open(path, true, hasRange ? &range : nullptr, backwards) &&
         finishOpening(selection_.selectFromURI(*uri, &errorMessage_));
}

bool ZVWTFileImpl::openWithColumnNames(const ZvbString& name, int count, const ZvbString* names,
                                       const RowRange* range, bool backwards) noexcept {
  return open(name, true, range, backwards) &&
         finishOpening(selection_.selectNames(count, names, &errorMessage_));
}

bool ZVWTFileImpl::openWithColumnNumbers(const ZvbString& name, int count, const int* numbers,
                                         const RowRange* range, bool backwards) noexcept {
  return open(name, true, range, backwards) &&
         finishOpening(selection_.selectNumbers(count, numbers, &errorMessage_));
}

bool ZVWTFileImpl::finishOpening(bool selected) noexcept {
  if (!selected) {
    failed_ = true;
    abandonOpening();
    return false;
  }
  state_.stringBuffer.setLimit(selection_.longestText());
  state_.readsWholeRows = !selection_.exists();
  state_.firstDelivered = selection_.linkDelivered();
  return true;
}

ZvbString ZVWTFileImpl::getURI(bool allColumns) noexcept {
  const bool hasRange = rangeStart_ != 0 || rangeCount_ >= 0;
  const BuiltHandle uri(hasRange ? getWorkTableURIFromComponents(name_, rangeStart_, rangeCount_)
                                 : getWorkTableURIFromComponents(name_));
  const bool described = uri != nullptr && selection_.describe(allColumns && createdHere_, *uri);
  return described ? uri->toString() : ZvbString();
}
