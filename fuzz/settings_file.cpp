// Feeds files to AppSettings: each value is found in any letter case, and a written file reads back
// the same.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <QFile>
#include <QTemporaryDir>

#include "framework/text.h"
#include "fuzz/expect.h"
#include "storage/app_settings.h"

using namespace corvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const QTemporaryDir folder;
  AppSettings settings(folder.path());
  QFile file(*settings.File());
  Expect(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the file can be written");
  file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
  file.close();

  settings.Load();
  const std::vector<std::pair<std::string, std::string>> read = settings.Values();
  for (const auto& [name, value] : read)
    Expect(settings.GetValue(FoldText(name), "none") == value, "a value by its folded name");
  Expect(settings.Values() == read, "asking for what is there adds nothing");

  settings.SetValue("AttachedPort", "12001");
  AppSettings again(folder.path());
  again.Load();
  Expect(again.Values() == settings.Values(), "what was written is read back");
  return 0;
}
