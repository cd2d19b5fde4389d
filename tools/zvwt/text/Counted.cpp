#include "text/Counted.h"

namespace zvwttool {

std::string counted(std::int64_t count, std::string_view one, std::string_view many) {
  return std::to_string(count).append(1, ' ').append(count == 1 ? one : many);
}

std::string counted(std::int64_t count, std::string_view noun) {
  return counted(count, noun, std::string(noun) + 's');
}

}  // namespace zvwttool
