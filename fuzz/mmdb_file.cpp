// Opens the input as an mmdb file and looks up addresses: texts are bounded, and a second lookup
// gives the same.

#include "geo/mmdb_file.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using corvane::ClientLocation;

namespace {

constexpr std::size_t kMaxTextBytes = 256;

std::string Found(const corvane::MmdbFile& file, const std::string& address) {
  ClientLocation location{"a", "b", "c", "d", "e", {}};
  std::string all = file.Find(address, location);
  for (const std::string& text :
       {location.country, location.state, location.city, location.zip, location.timeZone}) {
    if (text.empty() || text.size() > kMaxTextBytes) std::abort();
    all += "|" + text;
  }
  return all;
}

}  // namespace

// The library leaks a buffer when it rejects a file's metadata.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT(bugprone-reserved-identifier)
  return "leak:libmaxminddb";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int memory = memfd_create("mmdb", 0);
  if (ftruncate(memory, 0) != 0 || pwrite(memory, data, size, 0) != static_cast<ssize_t>(size)) {
    return -1;
  }
  const corvane::MmdbFile file("/proc/self/fd/" + QString::number(memory));
  for (const char* address : {"0.0.0.0", "10.1.2.3", "192.0.2.17", "255.255.255.255"}) {
    if (Found(file, address) != Found(file, address)) std::abort();
  }
  return 0;
}
