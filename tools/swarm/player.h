#pragma once

#include <chrono>
#include <random>
#include <string>

#include "client/report.h"
#include "tools/swarm/client_pool.h"

namespace corvane::swarm {

// Simulates a player of the demonstration: it walks from place to place on its map, fights other
// players that it meets, dies now and then, and comes back to life.
class Player {
 public:
  Player(std::mt19937& random, Clock::time_point now);

  const client::Report& Report() const { return myReport; }
  Clock::time_point NextStep() const { return myNextStep; }

  // Does one step. Returns whether the report has changed.
  bool Step(std::mt19937& random, Clock::time_point now);

  bool CanFight(const Player& other) const;
  void StartFight();

 private:
  void ChooseDestination(std::mt19937& random);
  void Walk(std::mt19937& random);
  void Fight(std::mt19937& random);

  client::Report myReport;
  std::int32_t myFullHp;
  std::int32_t myDestinationX = 0;
  std::int32_t myDestinationY = 0;
  int myRounds = 0;  // left in the fight
  Clock::time_point myNextStep;
};

// A unique name for each number.
std::string PlayerName(std::size_t number);

}  // namespace corvane::swarm
