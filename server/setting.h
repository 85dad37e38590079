#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

class AppSettings;

// A setting that the server knows.
struct Setting {
  std::string_view name;
  std::string_view expected;  // completes the sentence "NAME takes ..."
  bool (*takes)(std::string_view value);
  std::string_view otherwise = {};  // what the server does with any other value
  std::string_view ignored = {};    // a sentence without its end, if the server ignores the setting

  // The sentence that refuses the value.
  std::string Refusal(std::string_view value) const;
};

std::span<const Setting> KnownSettings();
// Null if there is no setting of that name. Letter case does not matter.
const Setting* FindSetting(std::string_view name);

// A sentence for each setting that is unknown or has a value that it does not take.
std::vector<std::string> FaultsOf(const AppSettings& settings);

// Whether a switch is on. It is off for 0, no, false, off and an empty text, in any letter case.
// Any other value counts as on: a slip must not weaken the rules.
bool IsOn(std::string_view value);

}  // namespace corvane
