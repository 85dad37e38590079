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
  rules.isHeardBeforeLogin = false;
  rules.statementValues = StatementValues::Bound;
  rules.areAllBansShown = false;
  rules.mayUserNameMislead = false;
  rules.isSeatTakenBeforePassword = false;
  rules.timeToLogin = 15s;
  rules.timeToLeave = 2s;
  rules.maxMessageBeforeLogin = std::size_t{4} << 10;
  rules.maxMessageAfterLogin = std::size_t{64} << 10;
  rules.maxUserName = 64;
  rules.maxReason = 1024;
  rules.rateBeforeLogin = MessageRate::Of(10, 20);
  rules.rateAfterLogin = MessageRate::Of(50, 500);
  rules.maxConnections.emplace();
  rules.passwordDelays.emplace();
  rules.statusLines.emplace();
  return rules;
}

Rules Rules::FromSettings(AppSettings& settings) {
  const bool isHardened = IsOn(settings.GetValue("Hardened", "0"));
  Rules rules = isHardened ? Hardened() : Classic();
  rules.trustedAddresses = AddressRanges(settings.GetValue("TrustedAddresses", ""));
  rules.proxyAddresses = AddressRanges(settings.GetValue("ProxyAddresses", ""));
  return rules;
}

}  // namespace corvane
