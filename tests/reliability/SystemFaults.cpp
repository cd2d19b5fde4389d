#include "reliability/SystemFaults.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <string_view>

namespace {

const Fault* fault = nullptr;  // set while `armed` is not
std::int64_t firstFailing = 0;
bool isLasting = false;
std::atomic<bool> armed{false};
std::atomic<std::int64_t> calls{0};  // that the fault could happen to
std::atomic<unsigned> metCalls{0};
std::atomic<bool> metOnCatalogue{false};
std::array<char, 512> firstFile;

bool isCatalogue(std::string_view path) noexcept {
  return path.substr(path.find_last_of("/\\") + 1).starts_with("zvwt_");
}

}  // namespace

namespace call {

const Fault& currentFault() noexcept { return *fault; }

bool strikes(unsigned kind) noexcept {
  if (!armed || (fault->calls & kind) == 0) {
    return false;
  }
  const std::int64_t number = calls++;
  return number == firstFailing || (isLasting && number > firstFailing);
}

void note(unsigned kind, const char* path) noexcept {
  if (metCalls.fetch_or(kind) == 0) {
    (void)std::snprintf(firstFile.data(), firstFile.size(), "%s", path);
  }
  if (isCatalogue(path)) {
    metOnCatalogue = true;
  }
}

}  // namespace call

SystemFaults::SystemFaults(const Fault& what, std::int64_t first, bool lasting) noexcept {
  fault = &what;
  firstFailing = first;
  isLasting = lasting;
  calls = 0;
  metCalls = 0;
  metOnCatalogue = false;
  firstFile[0] = '\0';
  armed = true;
}

SystemFaults::~SystemFaults() { armed = false; }

unsigned SystemFaults::met() const noexcept { return metCalls; }

bool SystemFaults::metCatalogue() const noexcept { return metOnCatalogue; }

const char* SystemFaults::file() const noexcept { return firstFile.data(); }
