/// What XML 1.0 can hold.
#pragma once

#include <string_view>

namespace zvwttool {

/// The first text of a document that no reader of XML would take, as it stands between two tags:
/// with bytes that are no UTF-8, a character that XML does not have, or `]]>`. Empty when there is
/// none.
[[nodiscard]] std::string_view textThatIsNoXml(std::string_view document);

}  // namespace zvwttool
