#include "bricks/Streams.h"

#include <QTest>

class tst_Streams : public QObject
{
    Q_OBJECT

private slots:
    void producerSendsInOrderAndForgetsDroppedSubscribers();
    void mapperPassesTransformedValuesOn();
};

void tst_Streams::producerSendsInOrderAndForgetsDroppedSubscribers()
{
    Producer<int> producer;
    QStringList seen;
    auto first = producer.subscribe([&](int v) { seen << QStringLiteral("a%1").arg(v); });
    auto second = producer.subscribe([&](int v) { seen << QStringLiteral("b%1").arg(v); });
    QVERIFY(!producer.latestValue);
    producer.send(1);
    QCOMPARE(seen, (QStringList {"a1", "b1"}));
    first.reset();
    producer.send(2);
    QCOMPARE(seen, (QStringList {"a1", "b1", "b2"}));
    QCOMPARE(producer.subscribers.size(), size_t(1));
    QCOMPARE(producer.latestValue, std::optional<int>(2));
    // No replay: a late subscriber waits for the next value.
    auto late = producer.subscribe([&](int v) { seen << QStringLiteral("c%1").arg(v); });
    QCOMPARE(seen.size(), 3);
}

void tst_Streams::mapperPassesTransformedValuesOn()
{
    auto source = std::make_shared<Producer<int>>();
    QStringList seen;
    std::shared_ptr<Subscriber<QString>> subscriber;
    {
        auto mapper = std::make_shared<Mapper<int, QString>>(
            source, [](int v) { return QStringLiteral("#%1").arg(v); });
        subscriber = mapper->subscribe([&](const QString &v) { seen << v; });
        source->send(7);
        QCOMPARE(seen, QStringList {"#7"});
        QCOMPARE(mapper->latestValue, std::optional<QString>("#7"));
    }
    // The mapping ended with the mapper.
    source->send(8);
    QCOMPARE(seen, QStringList {"#7"});
    QVERIFY(source->subscribers.empty());
}

QTEST_GUILESS_MAIN(tst_Streams)
#include "tst_Streams.moc"
