#pragma once

#include <QList>
#include <QRandomGenerator>

#include <initializer_list>

namespace korvo::campaign {

/// All that is left to chance, from one seed: the same seed gives the same campaign.
class Dice {
public:
    explicit Dice(quint32 seed) : m_generator(seed) { }

    int below(int limit) { return m_generator.bounded(limit); }
    int between(int least, int most) { return m_generator.bounded(least, most + 1); }
    bool oneIn(int count) { return below(count) == 0; }
    template <typename T> T of(std::initializer_list<T> all) { return all.begin()[below(int(all.size()))]; }
    template <typename T> T of(const QList<T> &all) { return all[below(int(all.size()))]; }

private:
    QRandomGenerator m_generator;
};

} // namespace korvo::campaign
