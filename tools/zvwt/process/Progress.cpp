#include "process/Progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "process/Diagnostics.h"
#include "process/System.h"

namespace zvwttool {
namespace {

/// One to three digits and their scale, such as "4.5M"; of bytes it is parted from them: "4.5 M".
ZvbString scaledText(double amount, ProgressUnit unit) noexcept {
  constexpr std::array scales = {"", "k", "M", "G", "T", "P", "E"};
  std::size_t scale = 0;
  for (; amount >= 999.5 && scale + 1 < scales.size(); ++scale) {
    amount /= 1000;
  }
  const int places = scale > 0 && amount < 9.95 ? 1 : 0;
  const char* const gap = unit == ProgressUnit::bytes ? " " : "";
  return zvbStringFormat("%.*f%s%s", places, amount, gap, scales[scale]);
}

const char* unitText(ProgressUnit unit) noexcept {
  return unit == ProgressUnit::bytes ? "B" : " rows";
}

ZvbString doneText(const ProgressState& state) noexcept {
  const char* const unit = unitText(state.unit);
  const ZvbString done = scaledText(static_cast<double>(state.done), state.unit);
  if (state.total < 0) {
    return zvbStringFormat("  %s%s", done.asCstr(), unit);
  }
  const ZvbString total = scaledText(static_cast<double>(state.total), state.unit);
  return state.unit == ProgressUnit::bytes
             ? zvbStringFormat("  %s%s of %s%s", done.asCstr(), unit, total.asCstr(), unit)
             : zvbStringFormat("  %s of %s%s", done.asCstr(), total.asCstr(), unit);
}

ZvbString rateText(const ProgressState& state) noexcept {
  const double rate = static_cast<double>(state.done) / state.seconds;
  return zvbStringFormat("  %s%s/s", scaledText(rate, state.unit).asCstr(), unitText(state.unit));
}

/// Empty when nobody can tell.
ZvbString timeLeftText(const ProgressState& state) noexcept {
  constexpr double longest = 99.0 * 3600;
  const auto rest = static_cast<double>(state.total - state.done);
  const double seconds = rest * state.seconds / static_cast<double>(state.done);
  if (state.total < 0 || state.done == 0 || seconds > longest) {
    return "";
  }
  const int left = static_cast<int>(std::lround(std::max(seconds, 0.0)));
  const int hours = left / 3600;
  return hours > 0 ? zvbStringFormat("  %d:%02d:%02d left", hours, left / 60 % 60, left % 60)
                   : zvbStringFormat("  %d:%02d left", left / 60, left % 60);
}

double shareDone(const ProgressState& state) noexcept {
  const double share = static_cast<double>(state.done) / static_cast<double>(state.total);
  return std::clamp(share, 0.0, 1.0);
}

ZvbString headText(const ProgressState& state) noexcept {
  return state.total < 0
             ? ZvbString(state.doing)
             : zvbStringFormat("%s %3d%%", state.doing, static_cast<int>(shareDone(state) * 100));
}

/// A bar that takes so many columns; empty when they are too few to be worth it.
ZvbString barText(const ProgressState& state, int width) noexcept {
  constexpr int frame = 3;  // columns: a blank and the brackets
  constexpr int fewest = 8;
  constexpr int most = 40;
  const int size = std::min(width - frame, most);
  if (state.total < 0 || size < fewest) {
    return "";
  }
  std::array<char, most + 1> cells{};
  const int filled = static_cast<int>(shareDone(state) * size);
  std::memset(cells.data(), ' ', static_cast<std::size_t>(size));
  std::memset(cells.data(), '=', static_cast<std::size_t>(filled));
  if (filled < size) {
    cells[static_cast<std::size_t>(filled)] = '>';
  }
  return zvbStringFormat(" [%s]", cells.data());
}

}  // namespace

ZvbString progressText(const ProgressState& state, int width) noexcept {
  const ZvbString head = headText(state);
  const std::array pieces = {doneText(state), rateText(state), timeLeftText(state)};
  ZvbString tail;
  int size = static_cast<int>(head.asView().size());
  for (std::size_t first = pieces.size(); first-- > 0;) {
    const int more = static_cast<int>(pieces[first].asView().size());
    if (size + more > width) {
      break;
    }
    tail = zvbStringFormat("%s%s", pieces[first].asCstr(), tail.asCstr());
    size += more;
  }
  return zvbStringFormat("%s%s%s", head.asCstr(), barText(state, width - size).asCstr(),
                         tail.asCstr());
}

Progress::Progress(const char* doing, ProgressUnit unit, std::int64_t total) noexcept
    : doing_(doing), unit_(unit), total_(total > 0 ? total : -1), isSeen_(statusIsSeen()) {}

Progress::~Progress() {
  if (isSeen_) {
    removeStatus();
  }
}

void Progress::show(std::int64_t done) noexcept {
  constexpr std::chrono::milliseconds pause(100);
  if (!isSeen_) {
    return;
  }
  const Clock::time_point now = Clock::now();
  if (now - shown_ < pause) {
    return;
  }
  shown_ = now;
  const double seconds = std::chrono::duration<double>(now - begin_).count();
  // In the last column, some terminals begin another line.
  const int width = terminalWidth(OutputStream::errors) - 1;
  showStatus(progressText({doing_, unit_, done, total_, seconds}, width).asView());
}

}  // namespace zvwttool
