#include "tables/ValueOrder.h"

namespace zvwttool {
namespace {

template <typename Number>
int compareNumbers(Number left, Number right) {
  return static_cast<int>(left > right) - static_cast<int>(left < right);
}

}  // namespace

int compareValues(const ZvbDatavar& left, const ZvbDatavar& right) {
  bool failed = false;
  switch (left.type()) {
    case zvbTypeBoolean:
      return compareNumbers(left.asBool(&failed), right.asBool(&failed));
    case zvbTypeInteger:
      return compareNumbers(left.asInt64(&failed), right.asInt64(&failed));
    case zvbTypeReal:
      return left.asReal(&failed).compare(right.asReal(&failed));
    case zvbTypeDate:
      return compareNumbers(left.asDate().days(), right.asDate().days());
    case zvbTypeString:
      break;
  }
  return left.asTextView().compare(right.asTextView());
}

}  // namespace zvwttool
