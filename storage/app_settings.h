#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QString>

namespace corvane {

// Named text values in an XML file, kept in the order in which they were first set. Names are
// compared without regard to letter case. A file that cannot be read leaves no values, and is kept
// as "Corvane Server.xml.broken" before anything is written over it; one that cannot be written
// stays as it is. Both are reported on standard error.
class AppSettings {
 public:
  // The folder that holds (or will hold) "Corvane Server.xml"; none: nothing is loaded or saved.
  explicit AppSettings(std::optional<QString> folder);

  // Event: something was told on standard error.
  std::function<void(const std::string&)> Complained;

  // Where they are kept, if anywhere.
  const std::optional<QString>& File() const { return myFile; }

  // Forgets everything and reads the file; writes a first file with "Port" = "12000" if there is
  // none.
  void Load();

  // Replaces the file as ReplaceFile does; whether it did.
  bool Save();
  // Why the last save did not.
  const std::string& SaveError() const { return mySaveError; }

  // The value of the name. Where there is none, `defaultValue`, which is kept under the name and
  // written with the next save.
  std::string GetValue(std::string_view name, std::string_view defaultValue);

  // Names and values, in the order in which they were first set.
  const std::vector<std::pair<std::string, std::string>>& Values() const { return myValues; }

  // Keeps the value and saves at once, as Save does. A value that is not saved is not kept either.
  bool SetValue(std::string_view name, std::string_view value);

  // Tells what is wrong with a value or with the file.
  void Complain(const std::string& fault) const;

 private:
  std::string* Find(std::string_view name);
  void Keep(std::string_view name, std::string_view value);
  // Writes the file; what went wrong, or nothing.
  std::string Write();

  std::optional<QString> myFile;
  std::vector<std::pair<std::string, std::string>> myValues;
  bool myIsFileBroken = false;
  std::string mySaveError;
};

}  // namespace corvane
