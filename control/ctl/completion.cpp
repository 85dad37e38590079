#include "control/ctl/completion.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "control/ctl/help.h"

namespace corvane::ctl {
namespace {

// Null if no command has such an option.
const Option* OptionNamed(const QString& word) {
  static const auto options = [] {
    std::vector<Option> all(CommonOptions().begin(), CommonOptions().end());
    for (const Command& command : AllCommands()) {
      const auto own = OptionsOf(command);
      all.insert(all.end(), own.begin(), own.end());
    }
    return all;
  }();
  const auto found = std::ranges::find_if(
      options, [&word](const Option& option) { return word.mid(2) == option.name; });
  return word.startsWith("--") && found != options.end() ? &*found : nullptr;
}

QString ValuesOf(const Option& option) {
  if (QLatin1String(option.valueName) == QLatin1String("FILE")) return ":files\n";
  return QLatin1String(option.valueName) == QLatin1String("FOLDER") ? ":folders\n" : "";
}

class Candidates {
 public:
  explicit Candidates(QString beginning) : myBeginning(std::move(beginning)) {}
  void Add(const QString& word, const QString& description) {
    const QString line = word + '\t' + description + '\n';
    if (word.startsWith(myBeginning) && !text.contains('\n' + word + '\t')) text += line;
  }
  void Add(std::span<const Option> options) {
    for (const Option& option : options)
      Add(QStringLiteral("--") + option.name, option.description);
  }

  QString text = "\n";

 private:
  QString myBeginning;
};

}  // namespace

QString Completions(const QStringList& words) {
  if (words.isEmpty()) return {};
  QStringList given;
  const Option* open = nullptr;  // takes the next word as its value
  for (const QString& word : words.first(words.size() - 1)) {
    if (word == "=") continue;  // bash makes it a word between an option and its value
    const bool isValue = open != nullptr;
    open = isValue ? nullptr : OptionNamed(word);
    if (open != nullptr && open->valueName == nullptr) open = nullptr;
    if (!isValue && !word.startsWith('-')) given.push_back(word);
  }
  if (open != nullptr) return ValuesOf(*open);
  const bool isHelp = given.value(0) == "help";
  if (isHelp) given.removeFirst();

  Candidates found(words.back());
  for (const Command& command : AllCommands()) {
    const QStringList own = QString(command.words).split(' ');
    if (given.size() < own.size()) {
      if (own.first(given.size()) != given) continue;
      const bool isWhole = given.size() + 1 == own.size();
      found.Add(own[given.size()], isWhole ? command.description : "");
    } else if (given.first(own.size()) == own && !isHelp) {
      if (words.back().startsWith('-')) found.Add(OptionsOf(command));
      if (command.takesFile && given.size() == own.size()) return ":files\n";
    }
  }
  if (words.back().startsWith('-')) found.Add(CommonOptions());
  return found.text.mid(1);
}

}  // namespace corvane::ctl
