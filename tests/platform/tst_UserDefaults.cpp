#include "platform/UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

class tst_UserDefaults : public QObject
{
    Q_OBJECT

private slots:
    void registeredDefaultsSitUnderStoredValues();
    void valuesKeepTheirTypesAcrossARestart();
    void observersRunPerKeyOnTheWritersThread();
    void damagedFileReadsAsDefaultsAndIsKept();

private:
    QTemporaryDir m_dir;
};

void tst_UserDefaults::registeredDefaultsSitUnderStoredValues()
{
    UserDefaults defaults(m_dir.filePath(QStringLiteral("a.json")));
    QVERIFY(!defaults.objectForKey(QStringLiteral("k")).isValid());
    defaults.registerDefaults({{QStringLiteral("k"), 7}});
    QCOMPARE(defaults.objectForKey(QStringLiteral("k")).toInt(), 7);
    defaults.setObject(9, QStringLiteral("k"));
    QCOMPARE(defaults.objectForKey(QStringLiteral("k")).toInt(), 9);
    defaults.removeObjectForKey(QStringLiteral("k"));
    QCOMPARE(defaults.objectForKey(QStringLiteral("k")).toInt(), 7);
    QVERIFY(defaults.stringForKey(QStringLiteral("k")).isNull());
}

void tst_UserDefaults::valuesKeepTheirTypesAcrossARestart()
{
    const QString path = m_dir.filePath(QStringLiteral("b.json"));
    {
        UserDefaults defaults(path);
        defaults.setObject(true, QStringLiteral("bool"));
        defaults.setObject(42, QStringLiteral("int"));
        defaults.setObject(200.5, QStringLiteral("double"));
        defaults.setObject(QStringLiteral("x\ny \"z\" é"), QStringLiteral("string"));
        defaults.setObject(QStringList {QStringLiteral("/a b"), QStringLiteral("/ü")},
                           QStringLiteral("list"));
        QVERIFY(defaults.synchronize());
    }
    UserDefaults reopened(path);
    QCOMPARE(reopened.objectForKey(QStringLiteral("bool")).typeId(), int(QMetaType::Bool));
    QCOMPARE(reopened.objectForKey(QStringLiteral("bool")).toBool(), true);
    QCOMPARE(reopened.objectForKey(QStringLiteral("int")).toInt(), 42);
    QCOMPARE(reopened.objectForKey(QStringLiteral("double")).toDouble(), 200.5);
    QCOMPARE(reopened.stringForKey(QStringLiteral("string")), QStringLiteral("x\ny \"z\" é"));
    QCOMPARE(reopened.objectForKey(QStringLiteral("list")).toStringList(),
             (QStringList {QStringLiteral("/a b"), QStringLiteral("/ü")}));
}

void tst_UserDefaults::observersRunPerKeyOnTheWritersThread()
{
    UserDefaults defaults(m_dir.filePath(QStringLiteral("c.json")));
    QStringList seen;
    std::thread::id observerThread;
    const auto id = defaults.addObserver(QStringLiteral("watched"), [&](const QString &key) {
        // The new value is already readable when the observer runs.
        seen << key + QLatin1Char('=') + defaults.objectForKey(key).toString();
        observerThread = std::this_thread::get_id();
    });
    defaults.setObject(QStringLiteral("other"), QStringLiteral("unwatched"));
    std::thread writer([&] { defaults.setObject(QStringLiteral("1"), QStringLiteral("watched")); });
    const auto writerId = writer.get_id();
    writer.join();
    QCOMPARE(seen, QStringList {QStringLiteral("watched=1")});
    QCOMPARE(observerThread, writerId);

    defaults.removeObserver(id);
    defaults.setObject(QStringLiteral("2"), QStringLiteral("watched"));
    QCOMPARE(seen.size(), 1);
}

// A preferences file that is not a JSON object must not stop the program: it reads as empty, so
// each setting takes its default, and it is kept aside before a change writes over it.
void tst_UserDefaults::damagedFileReadsAsDefaultsAndIsKept()
{
    const QString path = m_dir.filePath(QStringLiteral("d.json"));
    const QByteArray damaged("{\"k\": 3, \"cut off here");
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(damaged);
    }
    UserDefaults defaults(path);
    defaults.registerDefaults({{QStringLiteral("k"), 7}});
    QCOMPARE(defaults.objectForKey(QStringLiteral("k")).toInt(), 7);
    QFile kept(path + QStringLiteral(".damaged"));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), damaged);

    defaults.setObject(9, QStringLiteral("k"));
    QVERIFY(defaults.synchronize());
    const UserDefaults reopened(path);
    QCOMPARE(reopened.objectForKey(QStringLiteral("k")).toInt(), 9);
}

QTEST_GUILESS_MAIN(tst_UserDefaults)
#include "tst_UserDefaults.moc"
