#include "updater/update_platform.h"

namespace corvane {

const char* DownloadElement() {
  return "LinuxDownload";
}

// The desktop tells by the ending of the name what to do with a file.
bool DefaultUseActualFilename() {
  return true;
}

}  // namespace corvane
