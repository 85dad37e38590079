#include <algorithm>
#include <windows.h>

#include "framework/standard_output.h"

namespace corvane {

void StandardOutput::WriteKept() {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  // A program with windows has none unless somebody gave it one.
  myClosed = myClosed || output == nullptr || output == INVALID_HANDLE_VALUE;
  if (!myClosed && GetFileType(output) == FILE_TYPE_PIPE) {
    // A full pipe then takes less, or nothing, at once; also from others who write into it, since
    // the system knows no other way.
    DWORD mode = PIPE_READMODE_BYTE | PIPE_NOWAIT;
    SetNamedPipeHandleState(output, &mode, nullptr, nullptr);
  }
  std::size_t done = 0;
  while (!myClosed && done < myKept.size()) {
    constexpr std::size_t kMostAtOnce = 4096;  // the usual size of a pipe
    const auto count = static_cast<DWORD>(std::min(myKept.size() - done, kMostAtOnce));
    DWORD written = 0;
    if (!WriteFile(output, myKept.data() + done, count, &written, nullptr)) {
      myClosed = GetLastError() != ERROR_DISK_FULL;
      break;
    }
    if (written == 0) break;
    done += written;
  }
  myKept.erase(0, done);
  if (myClosed) myKept = {};
}

}  // namespace corvane
