/// What the system knows about the streams that people look at.
#pragma once

namespace zvwttool {

/// True when a person may be reading standard error as it is written.
[[nodiscard]] bool standardErrorIsTerminal() noexcept;

}  // namespace zvwttool
