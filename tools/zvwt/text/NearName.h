/// What somebody may have meant who mistyped a name.
#pragma once

#include <string>
#include <vector>

namespace zvwttool {

/// The known name that is nearest to the given one; empty when none is near. Near is what takes at
/// most two slips, and fewer than half of the given name's characters: a character too many, one
/// that is missing, a wrong one, or two that have changed places. The case of letters does not
/// count. Of names that are as near as each other the first one.
[[nodiscard]] std::string nearest(const std::string& given, const std::vector<std::string>& known);

/// What a message goes on with behind a name that nobody knows: `; did you mean "name"?`, or
/// nothing.
[[nodiscard]] std::string didYouMean(const std::string& given,
                                     const std::vector<std::string>& known);

}  // namespace zvwttool
