/// Numbers with the nouns that belong to them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zvwttool {

/// "1 text is" or "2 texts are", whichever words stand for one and for many.
[[nodiscard]] std::string counted(std::int64_t count, std::string_view one, std::string_view many);

/// "1 row", "2 rows": of a noun whose plural has an s more.
[[nodiscard]] std::string counted(std::int64_t count, std::string_view noun);

}  // namespace zvwttool
