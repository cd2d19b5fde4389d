#include <sys/random.h>
#include <unistd.h>

#include "base/zvb_random.h"

bool zvbRandomBytes(void* bytes, std::size_t size) noexcept { return getentropy(bytes, size) == 0; }
