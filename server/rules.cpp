#include "server/rules.h"

#include "server/setting.h"
#include "storage/app_settings.h"

namespace corvane {

using namespace std::chrono_literals;

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
  rules.maxMessageBeforeLogIn = std::size_t{4} << 10;
  rules.maxMessageAfterLogIn = std::size_t{64} << 10;
  rules.maxUserName = 64;
  rules.maxReason = 1024;
  rules.rateBeforeLogIn = MessageRate::Of(10, 20);
  rules.rateAfterLogIn = MessageRate::Of(50, 500);
  rules.maxConnections.emplace();
  rules.passwordDelays.emplace();
  rules.statusLines.emplace();
  return rules;
}

Rules Rules::FromSettings(AppSettings& settings) {
  const bool isHardened = IsOn(settings.GetValue("Hardened", "0"));
  Rules rules = isHardened ? Hardened() : Classic();
  rules.trustedAddresses = AddressRanges(settings.GetValue("TrustedAddresses", ""));
  return rules;
}

}  // namespace corvane
