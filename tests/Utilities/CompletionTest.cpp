#include "Utilities/Completion.h"

#include <QCoroTask>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

QCoro::Task<> append(Completion<QString> completion, QStringList *arrived)
{
    const auto value = co_await completion;
    arrived->append(value);
}

/// A value that can only be moved, as a reply or a file is.
QCoro::Task<> appendLength(Completion<std::unique_ptr<QString>> completion, QList<qsizetype> *lengths)
{
    const auto value = co_await completion;
    lengths->append(value->size());
}

} // namespace

class CompletionTest : public QObject {
    Q_OBJECT
private slots:
    void aWaitEndsInALaterTurnOfTheEventLoop();
    void aValueThatIsThereIsNotWaitedFor();
    void onlyTheFirstValueCounts();
    void aCompletionThatNoOneWaitsForIsForgotten();
    void aValueNeedsNoCopy();
};

void CompletionTest::aWaitEndsInALaterTurnOfTheEventLoop()
{
    const Completion<QString> completion;
    QStringList arrived;
    append(completion, &arrived);
    QCoreApplication::processEvents();
    QCOMPARE(arrived, QStringList());

    completion.complete(u"a"_s);
    QCOMPARE(arrived, QStringList());
    QTRY_COMPARE(arrived, QStringList{u"a"_s});
}

void CompletionTest::aValueThatIsThereIsNotWaitedFor()
{
    const Completion<QString> completion;
    QVERIFY(!completion.isComplete());
    completion.complete(u"a"_s);
    QVERIFY(completion.isComplete());
    QStringList arrived;
    append(completion, &arrived);
    QCOMPARE(arrived, QStringList{u"a"_s});
}

void CompletionTest::onlyTheFirstValueCounts()
{
    const Completion<QString> completion;
    QStringList arrived;
    append(completion, &arrived);
    completion.complete(u"a"_s);
    completion.complete(u"b"_s);
    QTRY_COMPARE(arrived.size(), 1);
    completion.complete(u"c"_s);
    QCoreApplication::processEvents();
    QCOMPARE(arrived, QStringList{u"a"_s});
}

void CompletionTest::aCompletionThatNoOneWaitsForIsForgotten()
{
    {
        const Completion<QString> completion;
        completion.complete(u"a"_s);
    }
    QCoreApplication::processEvents();
}

void CompletionTest::aValueNeedsNoCopy()
{
    const Completion<std::unique_ptr<QString>> completion;
    QList<qsizetype> lengths;
    appendLength(completion, &lengths);
    completion.complete(std::make_unique<QString>(u"four"_s));
    QTRY_COMPARE(lengths, QList<qsizetype>{4});
}

QTEST_GUILESS_MAIN(CompletionTest)

#include "CompletionTest.moc"
