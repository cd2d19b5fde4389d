#include <windows.h>
// Needs the types of the header above.
#include <ntsecapi.h>

#include "base/zvb_random.h"

bool zvbRandomBytes(void* bytes, std::size_t size) noexcept {
  return RtlGenRandom(bytes, static_cast<ULONG>(size)) != FALSE;
}
