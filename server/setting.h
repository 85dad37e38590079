#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

class AppSettings;

// One setting that the server knows.
struct Setting {
  std::string_view name;
  std::string_view expected;  // what it takes, for a sentence
  bool (*takes)(std::string_view value);
  std::string_view otherwise = {};  // what the server does with another value, if it says

  // Why the setting does not take the value.
  std::string Refusal(std::string_view value) const;
};

std::span<const Setting> KnownSettings();
// None if the server knows no setting of the name. Letter case does not matter.
const Setting* FindSetting(std::string_view name);

// What the server does not understand of the settings, a sentence each.
std::vector<std::string> FaultsOf(const AppSettings& settings);

// A switch is off for 0, no, false, off and an empty text, in any letter case. Anything else counts
// as on, so that no slip weakens the rules.
bool IsOn(std::string_view value);

}  // namespace corvane
