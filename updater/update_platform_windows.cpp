#include "updater/update_platform.h"

namespace corvane {

const char* DownloadElement() {
  return "WinDownload";
}

bool DefaultUseActualFilename() {
  return false;
}

}  // namespace corvane
