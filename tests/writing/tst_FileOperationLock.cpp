#include "writing/FileOperationLock.h"

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

class tst_FileOperationLock : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void marksFollowBeginAndEnd_data();
    void marksFollowBeginAndEnd();
    void concurrentMarksAndLookupsStayConsistent();
};

// The lock is one shared instance; every test starts from an empty set.
void tst_FileOperationLock::init()
{
    FileOperationLock &lock = FileOperationLock::shared();
    for (const QString &path : {u"/a"_s, u"/b"_s, u"/c"_s})
        lock.endMetadataRetrieval(path);
}

void tst_FileOperationLock::marksFollowBeginAndEnd_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("active");

    QTest::newRow("nothing asked") << QStringList {u"+/a"_s} << QStringList {};
    QTest::newRow("begin marks at once")
        << QStringList {u"+/a"_s, u"?/a"_s} << QStringList {u"/a"_s};
    QTest::newRow("begin, begin, end unmarks")
        << QStringList {u"+/a"_s, u"+/a"_s, u"-/a"_s, u"?/a"_s} << QStringList {};
    QTest::newRow("end of an unmarked path changes nothing")
        << QStringList {u"+/a"_s, u"-/b"_s, u"?/a"_s, u"?/b"_s} << QStringList {u"/a"_s};
    QTest::newRow("answers in the order asked, repeats included")
        << QStringList {u"+/a"_s, u"+/c"_s, u"?/c"_s, u"?/b"_s, u"?/a"_s, u"?/c"_s}
        << QStringList {u"/c"_s, u"/a"_s, u"/c"_s};
}

// Steps: "+path" begins, "-path" ends, "?path" adds the path to the question.
void tst_FileOperationLock::marksFollowBeginAndEnd()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, active);

    FileOperationLock &lock = FileOperationLock::shared();
    QStringList asked;
    for (const QString &step : std::as_const(steps)) {
        const QString path = step.mid(1);
        if (step.startsWith(u'+'))
            lock.beginMetadataRetrieval(path);
        else if (step.startsWith(u'-'))
            lock.endMetadataRetrieval(path);
        else
            asked << path;
    }
    QCOMPARE(lock.anyMetadataRetrievalActive(asked), active);
}

// Readers run alongside writers from several threads; each writer's own path must read as
// marked between its begin and end, whatever the others do.
void tst_FileOperationLock::concurrentMarksAndLookupsStayConsistent()
{
    FileOperationLock &lock = FileOperationLock::shared();
    std::atomic_int wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            const QString own = u"/thread/"_s + QString::number(t);
            for (int i = 0; i < 2000; ++i) {
                lock.beginMetadataRetrieval(own);
                if (lock.anyMetadataRetrievalActive({own}) != QStringList {own})
                    ++wrong;
                lock.endMetadataRetrieval(own);
                if (!lock.anyMetadataRetrievalActive({own}).isEmpty())
                    ++wrong;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(wrong.load(), 0);
}

QTEST_GUILESS_MAIN(tst_FileOperationLock)
#include "tst_FileOperationLock.moc"
