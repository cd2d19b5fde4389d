/// A quicksort whose partitioning has no branch that depends on the data, on the prefixes; then
/// groups of equal prefixes are sorted by the next twelve bytes of their keys in the same way. Both
/// go through memory in order and compare integers; a comparison function that follows each entry
/// to its item would miss the caches twice a time.
#include "datafile/EntrySort.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace {

/// Below this many entries, moving one after another into place is fastest.
constexpr std::ptrdiff_t fewEntries = 20;
/// Groups that still agree after so many prefixes are compared as a whole.
constexpr std::size_t mostPrefixes = 4;

bool before(const SortEntry& left, const SortEntry& right) noexcept { return left.isBefore(right); }

void insertionSort(SortEntry* first, SortEntry* last) noexcept {
  for (SortEntry* next = first + 1; next < last; ++next) {
    const SortEntry entry = *next;
    SortEntry* place = next;
    while (place != first && entry.isBefore(place[-1])) {
      *place = place[-1];
      --place;
    }
    *place = entry;
  }
}

SortEntry* middleOf(SortEntry* a, SortEntry* b, SortEntry* c) noexcept {
  if (b->isBefore(*a)) {
    std::swap(a, b);
  }
  return c->isBefore(*a) ? a : (c->isBefore(*b) ? c : b);
}

SortEntry* choosePivot(SortEntry* first, std::ptrdiff_t count) noexcept {
  constexpr std::ptrdiff_t many = 128;
  SortEntry* const middle = first + count / 2;
  SortEntry* const last = first + count - 1;
  if (count < many) {
    return middleOf(first, middle, last);
  }
  const std::ptrdiff_t step = count / 8;
  return middleOf(middleOf(first, first + step, first + 2 * step),
                  middleOf(middle - step, middle, middle + step),
                  middleOf(last - 2 * step, last - step, last));
}

/// Puts the pivot where it belongs, entries before it in front, and returns its place.
SortEntry* partition(SortEntry* first, SortEntry* last, SortEntry* chosen) noexcept {
  std::swap(*first, *chosen);
  const SortEntry pivot = *first;
  SortEntry* const begin = first + 1;
  std::size_t smaller = 0;
  for (SortEntry* next = begin; next != last; ++next) {
    const SortEntry entry = *next;
    *next = begin[smaller];
    begin[smaller] = entry;
    smaller += entry.isBefore(pivot) ? 1 : 0;
  }
  SortEntry* const place = first + smaller;
  std::swap(*first, *place);
  return place;
}

void heapSort(SortEntry* first, SortEntry* last) noexcept {
  std::make_heap(first, last, before);
  std::sort_heap(first, last, before);
}

/// `depth` is how many bad pivots are put up with before heap sort takes over.
void quickSort(SortEntry* first, SortEntry* last, int depth) noexcept {
  while (last - first > fewEntries) {
    if (depth-- == 0) {
      heapSort(first, last);
      return;
    }
    SortEntry* const place = partition(first, last, choosePivot(first, last - first));
    if (place - first < last - place) {
      quickSort(first, place, depth);
      first = place + 1;
    } else {
      quickSort(place + 1, last, depth);
      last = place;
    }
  }
  insertionSort(first, last);
}

void sortPrefixes(SortEntry* first, SortEntry* last) noexcept {
  if (!std::is_sorted(first, last, before)) {
    quickSort(first, last,
              2 * static_cast<int>(std::bit_width(static_cast<std::size_t>(last - first))));
  }
}

SortItem itemOf(const SortEntry& entry, const unsigned char* arena) noexcept {
  return sortItem::read(arena + entry.place());
}

void sortTies(SortEntry* first, SortEntry* last, const unsigned char* arena,
              std::size_t agreed) noexcept;

/// Sorts a group of entries whose keys agree in their first `agreed` bytes.
void sortGroup(SortEntry* first, SortEntry* last, const unsigned char* arena,
               std::size_t agreed) noexcept {
  if (last - first == 2 || agreed >= mostPrefixes * KeyPrefix::size) {
    const auto inOrder = [=](const SortEntry& left, const SortEntry& right) {
      const int order = compareKeys(itemOf(left, arena), itemOf(right, arena), agreed);
      return order != 0 ? order < 0 : left.place() < right.place();
    };
    if (!std::is_sorted(first, last, inOrder)) {
      std::sort(first, last, inOrder);
    }
    return;
  }
  const KeyPrefix shared = first->prefix();
  for (SortEntry* entry = first; entry != last; ++entry) {
    const SortItem item = itemOf(*entry, arena);
    *entry = SortEntry::of(KeyPrefix::of(item.key, item.keySize, agreed), entry->place());
  }
  sortPrefixes(first, last);
  sortTies(first, last, arena, agreed + KeyPrefix::size);
  for (SortEntry* entry = first; entry != last; ++entry) {
    *entry = SortEntry::of(shared, entry->place());
  }
}

/// Of sorted entries, sorts each group of equal prefixes by what follows in their keys, which agree
/// in their first `agreed` bytes within a group.
void sortTies(SortEntry* first, SortEntry* last, const unsigned char* arena,
              std::size_t agreed) noexcept {
  while (first != last) {
    SortEntry* end = first + 1;
    while (end != last && end->samePrefix(*first)) {
      ++end;
    }
    // Keys that end here are equal, and in order by their places.
    if (end - first > 1 && itemOf(*first, arena).keySize > agreed) {
      sortGroup(first, end, arena, agreed);
    }
    first = end;
  }
}

}  // namespace

void sortEntries(SortEntry* first, SortEntry* last, const unsigned char* arena) noexcept {
  sortPrefixes(first, last);
  sortTies(first, last, arena, KeyPrefix::size);
}
