#include <algorithm>
#include <windows.h>

#include "platform/standard_streams.h"

namespace corvane {

// Handles are not numbers that come again.
void OpenStandardStreams() {}

StreamWriting WriteWithoutWaiting(StandardStream stream, std::string_view bytes) {
  const HANDLE handle =
      GetStdHandle(stream == StandardStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  StreamWriting writing;
  // A program with windows has none unless somebody gave it one.
  writing.isClosed = handle == nullptr || handle == INVALID_HANDLE_VALUE;
  if (!writing.isClosed && GetFileType(handle) == FILE_TYPE_PIPE) {
    // A full pipe then takes less, or nothing, at once; also from others who write into it, since
    // the system knows no other way.
    DWORD mode = PIPE_READMODE_BYTE | PIPE_NOWAIT;
    SetNamedPipeHandleState(handle, &mode, nullptr, nullptr);
  }
  while (!writing.isClosed && writing.written < bytes.size()) {
    constexpr std::size_t kMostAtOnce = 4096;  // the usual size of a pipe
    const auto count = static_cast<DWORD>(std::min(bytes.size() - writing.written, kMostAtOnce));
    DWORD written = 0;
    if (!WriteFile(handle, bytes.data() + writing.written, count, &written, nullptr)) {
      writing.isClosed = GetLastError() != ERROR_DISK_FULL;
      break;
    }
    if (written == 0) break;
    writing.written += written;
  }
  return writing;
}

}  // namespace corvane
