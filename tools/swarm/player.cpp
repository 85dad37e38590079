#include "tools/swarm/player.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace corvane::swarm {

namespace {

using std::chrono::milliseconds;

constexpr std::int32_t kFacets = 3;
constexpr std::int32_t kWidth = 6144;
constexpr std::int32_t kHeight = 4096;
constexpr std::int32_t kMaxStep = 8;
constexpr std::int32_t kMaxFightDistance = 14;

struct Place {
  std::int32_t x;
  std::int32_t y;
};

// Towns and crossroads where players meet, the same on each facet.
constexpr std::array<Place, 6> kPlaces{
    {{1480, 1620}, {1530, 1700}, {2520, 560}, {1830, 2790}, {3690, 2230}, {1390, 1760}}};

constexpr std::array<const char*, 40> kNames{
    "Aldric", "Brenna", "Cassia",  "Dorvan",  "Elowen",  "Fenwick", "Gisla",  "Harrow",
    "Ismene", "Jorund", "Katrin",  "Lothar",  "Maerwyn", "Nestor",  "Oriel",  "Perrin",
    "Quilla", "Rowan",  "Sigrun",  "Tamsin",  "Ulric",   "Vesna",   "Wystan", "Ysolde",
    "Zephyr", "Anselm", "Bryony",  "Corin",   "Dagny",   "Edrik",   "Freya",  "Garrick",
    "Hesper", "Ivo",    "Jessamy", "Kestrel", "Leofric", "Mirabel", "Norrin", "Osric"};

std::int32_t Between(std::mt19937& random, std::int32_t least, std::int32_t most) {
  return std::uniform_int_distribution<std::int32_t>(least, most)(random);
}

}  // namespace

Player::Player(std::mt19937& random, Clock::time_point now)
    : myFullHp(Between(random, 60, 120)), myNextStep(now) {
  myReport.facet = Between(random, 0, 9) < 7 ? 0 : Between(random, 1, kFacets - 1);
  myReport.hp = myFullHp;
  ChooseDestination(random);
  myReport.x = myDestinationX;
  myReport.y = myDestinationY;
  ChooseDestination(random);
}

bool Player::Step(std::mt19937& random, Clock::time_point now) {
  const client::Report before = myReport;
  if (myReport.isDead) {
    myReport.isDead = false;
    myReport.hp = myFullHp / 2;
    myNextStep = now + milliseconds(Between(random, 500, 1500));
  } else if (myReport.inBattle) {
    Fight(random);
    myNextStep = now + milliseconds(myReport.isDead ? Between(random, 5000, 9000)
                                                    : Between(random, 500, 1100));
  } else {
    Walk(random);
    const bool rests = Between(random, 0, 39) == 0;
    myNextStep =
        now + milliseconds(rests ? Between(random, 2000, 6000) : Between(random, 250, 550));
  }
  return myReport != before;
}

bool Player::CanFight(const Player& other) const {
  const auto isReady = [](const client::Report& report) {
    return !report.isDead && !report.inBattle;
  };
  return isReady(myReport) && isReady(other.myReport) && myReport.facet == other.myReport.facet &&
         std::abs(myReport.x - other.myReport.x) <= kMaxFightDistance &&
         std::abs(myReport.y - other.myReport.y) <= kMaxFightDistance;
}

void Player::StartFight() {
  myReport.inBattle = true;
  myRounds = 8;
}

void Player::ChooseDestination(std::mt19937& random) {
  constexpr std::int32_t kRoom = 40;
  const Place& place = kPlaces[static_cast<std::size_t>(
      Between(random, 0, static_cast<std::int32_t>(kPlaces.size()) - 1))];
  myDestinationX = std::clamp(place.x + Between(random, -kRoom, kRoom), 0, kWidth - 1);
  myDestinationY = std::clamp(place.y + Between(random, -kRoom, kRoom), 0, kHeight - 1);
}

void Player::Walk(std::mt19937& random) {
  const double x = myDestinationX - myReport.x;
  const double y = myDestinationY - myReport.y;
  const double share = std::min(1.0, Between(random, 2, kMaxStep) / std::hypot(x, y));
  myReport.x += static_cast<std::int32_t>(std::lround(x * share));
  myReport.y += static_cast<std::int32_t>(std::lround(y * share));
  if (myReport.x == myDestinationX && myReport.y == myDestinationY) ChooseDestination(random);
  if (myReport.hp < myFullHp) ++myReport.hp;
}

void Player::Fight(std::mt19937& random) {
  myReport.hp = std::max(0, myReport.hp - Between(random, 0, myFullHp / 5));
  myReport.isDead = myReport.hp == 0;
  if (myReport.isDead || --myRounds == 0) {
    myReport.inBattle = false;
    ChooseDestination(random);
  }
}

std::string PlayerName(std::size_t number) {
  const std::size_t round = number / kNames.size();
  const std::string name = kNames[number % kNames.size()];
  return round == 0 ? name : name + " " + std::to_string(round + 1);
}

}  // namespace corvane::swarm
