#include "FaultDraw.h"

#include "sandbox/Fault.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace korvo::campaign {

namespace {

using sandbox::Fault;

struct Drawn {
    Fault fault;
    QString words;
};

Drawn drawError(Dice &dice)
{
    const int status = dice.of({400, 401, 403, 404, 409, 429, 500, 502, 503, 504, 529});
    return {Fault::error(status), u"error %1"_s.arg(status)};
}

Drawn drawRateLimit(Dice &dice)
{
    const auto retryAfter = dice.of<QByteArray>({"0", "0.5", "1", "7", "30", "120", "3600", "1e1", "0x1p3", "-3",
                                                 "soon", "", "Wed, 21 Oct 2026 07:28:00 GMT", " 7", "nan", "inf"});
    return {Fault::error(429, retryAfter), u"429 with Retry-After '%1'"_s.arg(QString::fromLatin1(retryAfter))};
}

/// An answer that is not what was asked for.
Drawn drawOddAnswer(Dice &dice)
{
    switch (dice.below(7)) {
    case 0: {
        const int status = dice.of({200, 403, 502, 503});
        return {Fault::html(status), u"HTML with %1"_s.arg(status)};
    }
    case 1: {
        const int status = dice.of({200, 400, 500});
        return {Fault::notUtf8(status), u"%1 that is not UTF-8"_s.arg(status)};
    }
    case 2:
        return {Fault::nested(dice.of({3, 500, 3000})), u"nested JSON"_s};
    case 3: {
        const qint64 bytes = dice.oneIn(12) ? qint64{40} * 1024 * 1024 : qint64{300} * 1024;
        return {Fault::streamed(bytes), u"%1 bytes"_s.arg(bytes)};
    }
    case 4: {
        const int kilobytes = dice.of({1, 8, 60});
        return {Fault::answer(400, QByteArray(kilobytes * 1024, 'x')), u"400 with %1 KiB"_s.arg(kilobytes)};
    }
    case 5: {
        const auto body = dice.of<QByteArray>({"", "[]", "null", "{}", "{\"results\":7}", "{\"results\":[1]}",
                                               "{\"results\":[{}]}", "{\"results\":[{\"id\":1}]}", "{\"results\":["});
        return {Fault::answer(200, body), u"200 with "_s + QString::fromLatin1(body)};
    }
    default: {
        const int status = dice.of({201, 204, 301, 302, 304, 418});
        return {Fault::answer(status, {}, {{"Location", "https://api.notion.com/elsewhere"}}),
                u"status %1"_s.arg(status)};
    }
    }
}

/// Something of the network's.
Drawn drawLoss(Dice &dice)
{
    using Kind = Fault::Kind;
    switch (dice.below(7)) {
    case 0:
        return {Fault::of(Kind::loseAnswer), u"lost answer"_s};
    case 1:
        return {Fault::of(Kind::cutBody), u"cut body"_s};
    case 2:
        return {Fault::of(Kind::cutHeaders), u"cut headers"_s};
    case 3:
        return {Fault::of(Kind::closeWithoutAnswer), u"closed without an answer"_s};
    case 4:
        return {Fault::of(Kind::closeBeforeReading), u"closed before reading"_s};
    default: {
        const int delay = dice.between(1, 20);
        return {Fault::slow(std::chrono::milliseconds(delay)), u"%1 ms late"_s.arg(delay)};
    }
    }
}

} // namespace

QString planFaults(World &world, Dice &dice)
{
    QStringList words;
    const int count = dice.between(1, 4);
    for (int i = 0; i < count; ++i) {
        Drawn drawn;
        switch (dice.below(20)) {
        case 0: // A server that says nothing: the program's minute of patience is cut short for it.
            drawn = {Fault::of(Fault::Kind::neverAnswer), u"no answer"_s};
            world.transport.timeout = 250ms;
            break;
        case 1:
        case 2:
        case 3:
            drawn = drawRateLimit(dice);
            break;
        case 4:
        case 5:
        case 6:
        case 7:
        case 8:
            drawn = drawError(dice);
            break;
        case 9:
        case 10:
        case 11:
        case 12:
            drawn = drawOddAnswer(dice);
            break;
        default:
            drawn = drawLoss(dice);
        }
        sandbox::FaultMatch match{.method = dice.of<QByteArray>({"", "", "", "POST", "PATCH", "GET"}),
                                  .pathPrefix = dice.of<QByteArray>({"", "", "", "/v1/pages", "/v1/databases"}),
                                  .nth = dice.of({1, 1, 1, 2, 3}),
                                  .times = dice.of({1, 1, 2, 3, 5, 9})};
        if (drawn.fault.kind == Fault::Kind::neverAnswer)
            match.times = 1;
        world.server.faults().add(drawn.fault, match);
        words.append(u"%1 (%2 %3 from the %4., %5 times)"_s
                         .arg(drawn.words, QString::fromLatin1(match.method), QString::fromLatin1(match.pathPrefix))
                         .arg(match.nth)
                         .arg(match.times));
    }
    return words.join(u"; "_s);
}

void endFaults(World &world)
{
    world.server.faults().clear();
    world.transport.timeout.reset();
}

} // namespace korvo::campaign
