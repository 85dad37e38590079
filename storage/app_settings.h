#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QString>

namespace corvane {

// Named text values in an XML file, kept in the order in which they were first set. Names are
// compared without regard to letter case. No operation ever fails visibly: a file that cannot be
// read leaves what was read so far, one that cannot be written leaves the old file.
class AppSettings {
 public:
  // The folder that holds (or will hold) "Corvane Server.xml"; none: nothing is loaded or saved.
  explicit AppSettings(std::optional<QString> folder);

  // Where they are kept, if anywhere.
  const std::optional<QString>& File() const { return myFile; }

  // Forgets everything and reads the file; writes a first file with "Port" = "12000" if there is
  // none.
  void Load();

  // Replaces the file as ReplaceFile does.
  void Save();

  // The value of the name. Where there is none, `defaultValue`, which is kept under the name and
  // written with the next save.
  std::string GetValue(std::string_view name, std::string_view defaultValue);

  // Names and values, in the order in which they were first set.
  const std::vector<std::pair<std::string, std::string>>& Values() const { return myValues; }

  // Keeps the value and saves at once.
  void SetValue(std::string_view name, std::string_view value);

 private:
  std::string* Find(std::string_view name);
  void Keep(std::string_view name, std::string_view value);

  std::optional<QString> myFile;
  std::vector<std::pair<std::string, std::string>> myValues;
};

}  // namespace corvane
