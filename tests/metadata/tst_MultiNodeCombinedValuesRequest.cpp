#include "metadata/MetadataStorage.h"
#include "metadata/MultiNodeCombinedValuesRequest.h"

#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Nodes whose embedded metadata is already in the store, with the given City values.
QList<NodePtr> nodesWithCities(const QString &prefix, const QList<std::optional<QString>> &cities)
{
    QList<NodePtr> nodes;
    MetadataStorage &storage = MetadataStorage::shared();
    for (int i = 0; i < cities.size(); ++i) {
        const QString path = u"/combined/%1-%2.jpg"_s.arg(prefix).arg(i);
        if (cities.at(i))
            storage.store(path, MetadataSource::ExifToolGeneric, u"City"_s, *cities.at(i));
        storage.store(path, MetadataSource::ExifToolGeneric, u"retrieved"_s, true);
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
    void largeSelectionWaitsForItsLastNode();
};

void tst_MultiNodeCombinedValuesRequest::combinations_data()
{
    QTest::addColumn<QList<std::optional<QString>>>("cities");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<bool>("missing");
    using V = QList<std::optional<QString>>;
    const auto a = std::optional(u"a"_s);
    const auto b = std::optional(u"b"_s);
    QTest::newRow("same with a gap")
        << V {a, a, std::nullopt} << int(CombinedValuesWrapper::Kind::SingleValue)
        << QStringList {u"a"_s} << true;
    QTest::newRow("distinct in first order")
        << V {b, a, b} << int(CombinedValuesWrapper::Kind::MultipleValues)
        << QStringList {u"b"_s, u"a"_s} << false;
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
    auto request = MultiNodeCombinedValuesRequest::create(nodes, u"City"_s,
                                                          MetadataSource::ExifToolGeneric, [] {});
    const CombinedValuesWrapper combined = request->combinedDisplayStringWrapper(u"City"_s);
    QTEST(int(combined.kind), "kind");
    QTEST(combined.values, "values");
    QTEST(combined.someValuesMissing, "missing");
}

void tst_MultiNodeCombinedValuesRequest::emptyListCallsBackOnTheNextTurn()
{
    int calls = 0;
    auto request = MultiNodeCombinedValuesRequest::create(
        {}, u"City"_s, MetadataSource::ExifToolGeneric, [&] { ++calls; });
    QCOMPARE(calls, 0);
    QVERIFY(TestSupport::waitUntil([&] { return calls == 1; }));
    QTest::qWait(20);
    QCOMPARE(calls, 1);
}

void tst_MultiNodeCombinedValuesRequest::readyDataCallsBackInsideCreate()
{
    int calls = 0;
    auto request
        = MultiNodeCombinedValuesRequest::create(nodesWithCities(u"ready"_s, {u"x"_s}), u"City"_s,
                                                 MetadataSource::ExifToolGeneric, [&] { ++calls; });
    QCOMPARE(calls, 1);
}

void tst_MultiNodeCombinedValuesRequest::waitingNodesCallBackOnceWhenTheLastArrives()
{
    // Unread files: their basic information is read in the background.
    QList<NodePtr> nodes;
    for (int i = 0; i < 5; ++i) {
        const QString path = u"/combined/unread-%1.jpg"_s.arg(i);
        nodes << FileNode::create(path.section(QLatin1Char('/'), -1), path, QString());
    }
    int calls = 0;
    auto request = MultiNodeCombinedValuesRequest::create(nodes, u"size_in_kb"_s,
                                                          MetadataSource::Basic, [&] { ++calls; });
    QCOMPARE(calls, 0);
    QVERIFY(TestSupport::waitUntil([&] { return calls == 1; }));
    // Late signals after the last read find no callback.
    for (const NodePtr &node : nodes)
        node->signalDataIsNowReady(MetadataSource::Basic);
    QTest::qWait(30);
    QCOMPARE(calls, 1);
    // The files do not exist, so no node has a value.
    QCOMPARE(request->combinedDisplayStringWrapper(u"size_in_kb"_s).kind,
             CombinedValuesWrapper::Kind::NoValue);
}

void tst_MultiNodeCombinedValuesRequest::largeSelectionWaitsForItsLastNode()
{
    // Thousands of distinct values, looked up in runs, and one file still unread at the end.
    QList<std::optional<QString>> cities;
    for (int i = 0; i < 5000; ++i)
        cities << u"City %1"_s.arg(i % 2500);
    QList<NodePtr> nodes = nodesWithCities(u"large"_s, cities);
    const QString unread = u"/combined/large-unread.jpg"_s;
    nodes << FileNode::create(unread.section(QLatin1Char('/'), -1), unread, QString());
    int calls = 0;
    auto request = MultiNodeCombinedValuesRequest::create(
        nodes, u"City"_s, MetadataSource::ExifToolGeneric, [&] { ++calls; });
    QCOMPARE(calls, 0);
    QVERIFY(TestSupport::waitUntil([&] { return calls == 1; }, 30000));
    const CombinedValuesWrapper combined = request->combinedDisplayStringWrapper(u"City"_s);
    QCOMPARE(combined.kind, CombinedValuesWrapper::Kind::MultipleValues);
    QCOMPARE(combined.values.size(), 2500);
    QCOMPARE(combined.values.at(1), u"City 1"_s);
    // The missing file has no city.
    QVERIFY(combined.someValuesMissing);
}

QTEST_GUILESS_MAIN(tst_MultiNodeCombinedValuesRequest)
#include "tst_MultiNodeCombinedValuesRequest.moc"
