// Consoles inside platforms whose port another one has at the platform's address. Commands leave
// one way to that: an update that gives a console another address of its own as well.
#pragma once

#include "report/places.h"

class Crowd {
  public:
    // Finds those that have to be brought to their port that way, and lets the commands of their
    // units give them another port first.
    Crowd(Work& work, const Comparison& comparison, FreshValues& fresh);

    // The commands that do the rest, when all others are done.
    std::vector<Step> LastSteps();

  private:
    using Group = std::vector<size_t>;

    [[nodiscard]] std::vector<Group> FindGroups() const;
    void Sort(const Group& group);
    void GiveWay(size_t now);
    [[nodiscard]] bool Claims(size_t now) const;
    [[nodiscard]] bool Holds(size_t now) const;

    Work& work_;
    const Comparison& comparison_;
    FreshValues& fresh_;
    std::vector<size_t> crowded_;  // as they shall be
};
