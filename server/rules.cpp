#include "server/rules.h"

#include "framework/numbers.h"
#include "storage/app_settings.h"

namespace corvane {

using namespace std::chrono_literals;

namespace {

// Between them stand blanks, commas or both.
std::set<std::string, std::less<>> AddressesIn(std::string_view text) {
  constexpr std::string_view kSeparators = " ,;\t\r\n";
  std::set<std::string, std::less<>> addresses;
  for (auto begin = text.find_first_not_of(kSeparators); begin != std::string_view::npos;
       begin = text.find_first_not_of(kSeparators)) {
    text.remove_prefix(begin);
    const std::string_view address = text.substr(0, text.find_first_of(kSeparators));
    addresses.emplace(address);
    text.remove_prefix(address.size());
  }
  return addresses;
}

}  // namespace

Rules Rules::Classic() {
  return {};
}

Rules Rules::Hardened() {
  Rules rules;
  rules.name = "hardened";
  rules.isMessageFatalWithoutNetwork = false;
  rules.isHeardBeforeLogIn = false;
  rules.statementValues = StatementValues::Bound;
  rules.areAllBansShown = false;
  rules.mayUserNameMislead = false;
  rules.isSeatTakenBeforePassword = false;
  rules.timeToLogIn = 15s;
  rules.timeToLeave = 2s;
  rules.longestBeforeLogIn = std::size_t{4} << 10;
  rules.longestAfterLogIn = std::size_t{64} << 10;
  rules.longestUserName = 64;
  rules.longestReason = 1024;
  rules.mostConnections.emplace();
  rules.passwordDelays.emplace();
  rules.statusLines.emplace();
  return rules;
}

Rules Rules::FromSettings(AppSettings& settings) {
  const bool isHardened = Int32FromText(settings.GetValue("Hardened", "0")) != 0;
  Rules rules = isHardened ? Hardened() : Classic();
  rules.trustedAddresses = AddressesIn(settings.GetValue("TrustedAddresses", ""));
  return rules;
}

}  // namespace corvane
