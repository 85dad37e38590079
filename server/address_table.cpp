#include "server/address_table.h"

#include <algorithm>
#include <utility>

#include "framework/ip_address.h"
#include "net/socket_core.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxMemories = 10'000;

}  // namespace

bool AddressTable::Admit(const std::string& address) {
  if (!IsCounted(address)) return true;
  const auto count = myConnections->find(ClientRange(address));
  if (count == myConnections->end()) return true;
  const ConnectionCounts& most = *myRules.maxConnections;
  if (count->second.all < most.all && count->second.notLoggedIn < most.notLoggedIn) return true;
  NoteClosed(address, &Memory::refused);
  return false;
}

void AddressTable::NoteMissingHeader(const std::string& address) {
  NoteClosed(address, &Memory::withoutHeader);
}

void AddressTable::NoteClosed(const std::string& address, Tally Memory::*tally) {
  const std::string range = ClientRange(address);
  Memory& memory = Remember(range);
  ++(memory.*tally).count;
  if (!std::exchange((memory.*tally).isReported, true)) Report(range, memory);
}

bool AddressTable::AdmitLine(const std::string& address) {
  if (!myRules.statusLines || IsTrusted(address)) return true;
  const LineRate& rate = *myRules.statusLines;
  const auto now = Clock::now();
  Memory& memory = Remember(ClientRange(address));
  if (memory.lines - now > (rate.burst - 1) * rate.interval) {
    ++memory.leftOut;
    return false;
  }
  memory.lines = std::max(memory.lines, now) + rate.interval;
  return true;
}

std::unique_ptr<AddressTable::Place> AddressTable::Enter(const std::string& address) {
  return IsCounted(address) ? std::make_unique<Place>(myConnections, ClientRange(address))
                            : nullptr;
}

AddressTable::Clock::duration AddressTable::PasswordDelay(const std::string& address) const {
  const auto memory = myMemories.find(ClientRange(address));
  if (memory == myMemories.end() || AreWrongPasswordsOver(memory->second)) return {};
  return memory->second.delay;
}

void AddressTable::NoteWrongPassword(const std::string& address) {
  if (!myRules.passwordDelays || IsTrusted(address)) return;
  const PasswordDelays& rule = *myRules.passwordDelays;
  const auto now = Clock::now();
  Memory& memory = Remember(ClientRange(address));
  auto& wrong = memory.wrongPasswords;
  if (AreWrongPasswordsOver(memory)) memory.delay = {};
  std::erase_if(wrong, [&](Clock::time_point time) { return now - time >= myRules.period; });
  wrong.push_back(now);
  if (wrong.size() > rule.free) wrong.erase(wrong.begin());
  if (memory.delay.count() > 0) {
    memory.delay = std::min(2 * memory.delay, rule.max);
  } else if (wrong.size() == rule.free) {
    memory.delay = rule.first;
  }
}

bool AddressTable::AreWrongPasswordsOver(const Memory& memory) const {
  return memory.wrongPasswords.empty() ||
         Clock::now() - memory.wrongPasswords.back() >= myRules.period;
}

AddressTable::Memory& AddressTable::Remember(const std::string& range) {
  const auto known = myMemories.find(range);
  if (known != myMemories.end()) return known->second;
  if (myMemories.size() >= kMaxMemories) {
    const std::string oldest = std::move(myVisits.front().address);
    myVisits.pop_front();
    Report(oldest, myMemories[oldest]);
    myMemories.erase(oldest);
  }
  VisitLater(range);
  return myMemories[range];
}

void AddressTable::Report(const std::string& address, Memory& memory) const {
  const auto report = [&](std::uint64_t& count, std::string_view what) {
    const std::uint64_t number = std::exchange(count, 0);
    if (number > 0) Reported({address, what, " (", std::to_string(number), ")"});
  };
  report(memory.refused.count, ": Connections Refused");
  report(memory.withoutHeader.count, ": Connections Without PROXY Header");
  report(memory.leftOut, ": Lines Left Out");
}

void AddressTable::VisitLater(const std::string& address) {
  myVisits.push_back({Clock::now() + myRules.period, address});
  CallAtFirst();
}

void AddressTable::CallAtFirst() {
  if (myIsCalled || myVisits.empty()) return;
  myIsCalled = true;
  myLoop.CallLater(myVisits.front().time - Clock::now(), myOwner.weak_from_this(),
                   [this] { VisitDue(); });
}

void AddressTable::VisitDue() {
  myIsCalled = false;
  const auto now = Clock::now();
  while (!myVisits.empty() && myVisits.front().time <= now) {
    const std::string address = std::move(myVisits.front().address);
    myVisits.pop_front();
    Memory& memory = myMemories[address];
    bool hasNews = memory.leftOut > 0;
    for (Tally* const tally : {&memory.refused, &memory.withoutHeader}) {
      tally->isReported = tally->count > 0;
      hasNews = hasNews || tally->isReported;
    }
    if (!hasNews && AreWrongPasswordsOver(memory)) {
      myMemories.erase(address);
    } else {
      VisitLater(address);
      Report(address, memory);
    }
  }
  CallAtFirst();
}

AddressTable::Place::Place(std::shared_ptr<Counts> counts, const std::string& address)
    : myCounts(std::move(counts)), myCount(&*myCounts->try_emplace(address).first) {
  ++myCount->second.all;
  ++myCount->second.notLoggedIn;
}

AddressTable::Place::~Place() {
  if (!myIsLoggedIn) --myCount->second.notLoggedIn;
  if (--myCount->second.all == 0) myCounts->erase(std::string(myCount->first));
}

void AddressTable::Place::Login() {
  if (!std::exchange(myIsLoggedIn, true)) --myCount->second.notLoggedIn;
}

}  // namespace corvane
