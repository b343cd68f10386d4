#include "metadata/MetadataStorage.h"
#include "metadata/MultiNodeCombinedValuesRequest.h"

#include "TestSupport.h"

#include <QTest>

namespace {

// Nodes whose embedded metadata is already in the store, with the given City values.
QList<NodePtr> nodesWithCities(const QString &prefix, const QList<std::optional<QString>> &cities)
{
    QList<NodePtr> nodes;
    MetadataStorage &storage = MetadataStorage::shared();
    for (int i = 0; i < cities.size(); ++i) {
        const QString path = QStringLiteral("/combined/%1-%2.jpg").arg(prefix).arg(i);
        if (cities.at(i))
            storage.store(path, MetadataSource::ExifToolGeneric, QStringLiteral("City"),
                          *cities.at(i));
        storage.store(path, MetadataSource::ExifToolGeneric, QStringLiteral("retrieved"), true);
        nodes << FileNode::create(path.section(QLatin1Char('/'), -1), path, QString());
    }
    return nodes;
}

} // namespace

class tst_MultiNodeCombinedValuesRequest : public QObject
{
    Q_OBJECT

private slots:
    void combinations_data();
    void combinations();
    void emptyListCallsBackOnTheNextTurn();
    void readyDataCallsBackInsideCreate();
    void waitingNodesCallBackOnceWhenTheLastArrives();
};

void tst_MultiNodeCombinedValuesRequest::combinations_data()
{
    QTest::addColumn<QList<std::optional<QString>>>("cities");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<bool>("missing");
    using V = QList<std::optional<QString>>;
    const auto a = std::optional<QString>(QStringLiteral("a"));
    const auto b = std::optional<QString>(QStringLiteral("b"));
    QTest::newRow("same with a gap")
        << V {a, a, std::nullopt} << int(CombinedValuesWrapper::Kind::SingleValue)
        << QStringList {QStringLiteral("a")} << true;
    QTest::newRow("distinct in first order")
        << V {b, a, b} << int(CombinedValuesWrapper::Kind::MultipleValues)
        << QStringList {QStringLiteral("b"), QStringLiteral("a")} << false;
    QTest::newRow("none") << V {std::nullopt, std::nullopt}
                          << int(CombinedValuesWrapper::Kind::NoValue) << QStringList() << false;
    QTest::newRow("no nodes") << V {} << int(CombinedValuesWrapper::Kind::NoValue) << QStringList()
                              << false;
}

void tst_MultiNodeCombinedValuesRequest::combinations()
{
    QFETCH(QList<std::optional<QString>>, cities);
    const QList<NodePtr> nodes
        = nodesWithCities(QString::fromLatin1(QTest::currentDataTag()), cities);
    auto request = MultiNodeCombinedValuesRequest::create(nodes, QStringLiteral("City"),
                                                          MetadataSource::ExifToolGeneric, [] {});
    const CombinedValuesWrapper combined
        = request->combinedDisplayStringWrapper(QStringLiteral("City"));
    QTEST(int(combined.kind), "kind");
    QTEST(combined.values, "values");
    QTEST(combined.someValuesMissing, "missing");
}

void tst_MultiNodeCombinedValuesRequest::emptyListCallsBackOnTheNextTurn()
{
    int calls = 0;
    auto request = MultiNodeCombinedValuesRequest::create(
        {}, QStringLiteral("City"), MetadataSource::ExifToolGeneric, [&] { ++calls; });
    QCOMPARE(calls, 0);
    QVERIFY(TestSupport::waitUntil([&] { return calls == 1; }));
    QTest::qWait(20);
    QCOMPARE(calls, 1);
}

void tst_MultiNodeCombinedValuesRequest::readyDataCallsBackInsideCreate()
{
    int calls = 0;
    auto request = MultiNodeCombinedValuesRequest::create(
        nodesWithCities(QStringLiteral("ready"), {QStringLiteral("x")}), QStringLiteral("City"),
        MetadataSource::ExifToolGeneric, [&] { ++calls; });
    QCOMPARE(calls, 1);
}

void tst_MultiNodeCombinedValuesRequest::waitingNodesCallBackOnceWhenTheLastArrives()
{
    // Unread files: their basic information is read in the background.
    QList<NodePtr> nodes;
    for (int i = 0; i < 5; ++i) {
        const QString path = QStringLiteral("/combined/unread-%1.jpg").arg(i);
        nodes << FileNode::create(path.section(QLatin1Char('/'), -1), path, QString());
    }
    int calls = 0;
    auto request = MultiNodeCombinedValuesRequest::create(nodes, QStringLiteral("size_in_kb"),
                                                          MetadataSource::Basic, [&] { ++calls; });
    QCOMPARE(calls, 0);
    QVERIFY(TestSupport::waitUntil([&] { return calls == 1; }));
    // Late signals after the last read find no callback.
    for (const NodePtr &node : nodes)
        node->signalDataIsNowReady(MetadataSource::Basic);
    QTest::qWait(30);
    QCOMPARE(calls, 1);
    // The files do not exist, so no node has a value.
    QCOMPARE(request->combinedDisplayStringWrapper(QStringLiteral("size_in_kb")).kind,
             CombinedValuesWrapper::Kind::NoValue);
}

QTEST_GUILESS_MAIN(tst_MultiNodeCombinedValuesRequest)
#include "tst_MultiNodeCombinedValuesRequest.moc"
