#include <algorithm>
#include <windows.h>

#include "platform/standard_streams.h"

namespace corvane {

// Windows does not assign standard handles to other files.
void OpenStandardStreams() {}

StreamWriting WriteWithoutWaiting(StandardStream stream, std::string_view bytes) {
  const HANDLE handle =
      GetStdHandle(stream == StandardStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  StreamWriting writing;
  // A program with windows has no stream unless its caller provided one.
  writing.isClosed = handle == nullptr || handle == INVALID_HANDLE_VALUE;
  if (!writing.isClosed && GetFileType(handle) == FILE_TYPE_PIPE) {
    // A full pipe then accepts less or nothing instead of blocking. This affects other writers of
    // the pipe, too; the system offers no alternative.
    DWORD mode = PIPE_READMODE_BYTE | PIPE_NOWAIT;
    SetNamedPipeHandleState(handle, &mode, nullptr, nullptr);
  }
  while (!writing.isClosed && writing.written < bytes.size()) {
    constexpr std::size_t kMaxBytesAtOnce = 4096;  // the usual size of a pipe
    const auto count =
        static_cast<DWORD>(std::min(bytes.size() - writing.written, kMaxBytesAtOnce));
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
