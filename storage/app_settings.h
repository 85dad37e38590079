#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QString>

namespace corvane {

// Named text values in an XML file, in the order in which they were first set. Names are compared
// ignoring letter case.
//
// If the file cannot be read, there are no values, and the file is kept as
// "Corvane Server.xml.broken" before it is replaced. If it cannot be written, it stays as it is.
// Both are reported on standard error.
class AppSettings {
 public:
  // The folder of "Corvane Server.xml", which may not exist yet. With none, nothing is loaded or
  // saved.
  explicit AppSettings(std::optional<QString> folder);

  // Event: this line was written to standard error.
  std::function<void(const std::string&)> FaultReported;

  // The settings file, if any.
  const std::optional<QString>& File() const { return myFile; }

  // Replaces all values by the file's; first writes a file with "Port" = "12000" if there is none.
  void Load();

  // Writes all values with ReplaceFile. Returns whether it worked.
  bool Save();
  // Why the last save failed; empty if it worked.
  const std::string& SaveError() const { return mySaveError; }

  // The value of the name. If there is none, `defaultValue`, which becomes the name's value and is
  // written with the next save.
  std::string GetValue(std::string_view name, std::string_view defaultValue);

  // Names and values, in the order in which they were first set.
  const std::vector<std::pair<std::string, std::string>>& Values() const { return myValues; }

  // Sets the value and saves. If the save fails, the value is unchanged; returns whether it worked.
  bool SetValue(std::string_view name, std::string_view value);

  // Reports a fault of a value or of the file.
  void ReportFault(const std::string& fault) const;

 private:
  std::string* Find(std::string_view name);
  void Keep(std::string_view name, std::string_view value);
  // Writes the file. Returns what went wrong, or nothing.
  std::string Write();

  std::optional<QString> myFile;
  std::vector<std::pair<std::string, std::string>> myValues;
  bool myIsFileBroken = false;
  std::string mySaveError;
};

}  // namespace corvane
