#pragma once

namespace corvane {

// What differs between operating systems for an update.

// Name of the catalogue's element with the address of this system's installer.
const char* DownloadElement();

// Whether the installer keeps the file name that it has in its address.
bool DefaultUseActualFilename();

}  // namespace corvane
