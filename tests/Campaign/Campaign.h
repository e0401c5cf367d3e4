#pragma once

#include "Campaign/Dice.h"
#include "Campaign/Promises.h"
#include "Campaign/World.h"

#include <QCryptographicHash>
#include <QMap>
#include <QStringList>

#include <functional>

namespace korvo::campaign {

/// Weeks of a user's life with the program in minutes: steps that the dice choose, and after each what was promised.
class Campaign {
public:
    struct Options {
        quint32 seed = 0;
        double days = 30;
        int mostSteps = 0; ///< 0 for as many as fit into the days.
        bool isVerbose = false;
    };

    Campaign(const Options &options, const QString &folder);

    /// Throws BrokenPromise.
    void run();

    int stepCount() const { return m_steps; }
    /// Twenty at most.
    QStringList lastSteps() const { return m_lastSteps; }
    QString summary(double seconds);

private:
    struct Press {
        QString words;
        std::function<void()> act;
        int entries = 0; ///< How many it makes when all goes well.
        int tasks = 0;
        bool isStop = false;
    };

    void step();
    void draw();
    void tell(const QString &words);
    void keepAccount();
    void housekeeping();
    void sample();
    bool isClean();

    // What happens.
    void passTime();
    void poll();
    void staySilent();
    void start();
    void stop();
    void quickAdd();
    void press(const Press &press);
    void planLostCreates();
    void otherDevice();
    void faults();
    void suspend();
    void changeTray();
    void changeSettings();
    void changeWorkspace();
    void writeAsAnother();
    void useWindows();
    void openAndCloseSettings(bool isLoadWaitedFor);
    void restart();

    void setReminderHours(double hours);
    void mendMapping();

    const Options m_options;
    Dice m_dice;
    World m_world;
    Footprint m_footprint;
    QMap<QString, double> m_foreign; ///< What another process has put into the store and nobody changed since.
    QSet<QString> m_thrownAway;      ///< Entries.
    qint64 m_start = 0;
    qint64 m_nextSample = 0;
    int m_steps = 0;
    int m_polls = 0;
    int m_presses = 0;
    int m_repeated = 0; ///< Presses that made more than one entry.
    int m_names = 0;
    QStringList m_lastSteps;
    QCryptographicHash m_trace{QCryptographicHash::Sha256};
};

} // namespace korvo::campaign
