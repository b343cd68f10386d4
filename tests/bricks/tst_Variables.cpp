#include "bricks/Variables.h"

#include "TestSupport.h"

#include <QTest>

namespace {
enum class Mode { Zero, One, Two };
}

class tst_Variables : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void straightListenersRunInOrderOnEveryWrite();
    void nestedWriteInterruptsTheOuterPass();
    void listenerAddedDuringAPassJoinsNextPass();
    void userDefaultsVariableReadsTheStoreAndNotifiesThroughIt();
    void rawRepresentableVariablesUseRawValues();
    void codableVariablesFallBackSilently();
    void combinedVariableNotifiesOncePerSourceChange();
    void typeErasedHoldersForward();
};

void tst_Variables::straightListenersRunInOrderOnEveryWrite()
{
    StraightVariable<int> variable(1);
    QStringList calls;
    variable.addHotListener([&](int v) { calls << QStringLiteral("A%1").arg(v); });
    QCOMPARE(calls, QStringList {QStringLiteral("A1")}); // hot: called before add returns
    variable.addColdListener([&](int v) { calls << QStringLiteral("B%1").arg(v); });
    QCOMPARE(calls.size(), 1); // cold: nothing yet
    variable.setValue(1); // an equal value notifies again
    variable.setValue(2);
    QCOMPARE(calls,
             (QStringList {QStringLiteral("A1"), QStringLiteral("A1"), QStringLiteral("B1"),
                           QStringLiteral("A2"), QStringLiteral("B2")}));
}

void tst_Variables::nestedWriteInterruptsTheOuterPass()
{
    StraightVariable<int> variable(0);
    QList<int> second;
    variable.addColdListener([&](int v) {
        if (v == 1)
            variable.setValue(2);
    });
    variable.addColdListener([&](int v) { second << v; });
    variable.setValue(1);
    // The nested pass delivers 2 first; the outer pass then goes on with its older value.
    QCOMPARE(second, (QList<int> {2, 1}));
    QCOMPARE(variable.value(), 2);
}

void tst_Variables::listenerAddedDuringAPassJoinsNextPass()
{
    StraightVariable<int> variable(0);
    QList<int> late;
    bool added = false;
    variable.addColdListener([&](int) {
        if (!added) {
            added = true;
            variable.addColdListener([&](int v) { late << v; });
            variable.addHotListener([&](int v) { late << 100 + v; });
        }
    });
    variable.setValue(5);
    QCOMPARE(late, QList<int> {105}); // only the hot one, once, by its own add
    variable.setValue(6);
    QCOMPARE(late, (QList<int> {105, 6, 106}));
}

void tst_Variables::userDefaultsVariableReadsTheStoreAndNotifiesThroughIt()
{
    UserDefaults &store = UserDefaults::standard();
    store.setObject(17, QStringLiteral("udv.stored"));
    UserDefaultsVariable<int> stored(QStringLiteral("udv.stored"), 3, DefaultsConverters::toInt(3));
    QCOMPARE(stored.value(), 17); // the stored value wins; nothing written at construction

    UserDefaultsVariable<bool> flag(QStringLiteral("udv.flag"), true,
                                    DefaultsConverters::toBool(true));
    QCOMPARE(flag.value(), true);
    QVERIFY(!store.filePath().isEmpty());
    QList<bool> seen;
    flag.addColdListener([&](bool v) { seen << v; });
    flag.setValue(false);
    QCOMPARE(seen, QList<bool> {false});
    // A change made to the key by anyone else notifies too.
    store.setObject(true, QStringLiteral("udv.flag"));
    QCOMPARE(seen, (QList<bool> {false, true}));
    // A wrongly typed entry reads as the converter's fallback.
    store.setObject(QStringLiteral("nonsense"), QStringLiteral("udv.flag"));
    QCOMPARE(flag.value(), true);
}

void tst_Variables::rawRepresentableVariablesUseRawValues()
{
    RawRepresentableStraightVariable<Mode> straight(Mode::One);
    QCOMPARE(straight.rawValue(), 1);
    straight.setRawValue(2);
    QCOMPARE(straight.value(), Mode::Two);

    RawRepresentableUserDefaultsVariable<Mode> persisted(
        QStringLiteral("udv.mode"), Mode::Two, [](int raw) { return raw >= 0 && raw <= 2; });
    QCOMPARE(persisted.value(), Mode::Two);
    persisted.setValue(Mode::Zero);
    QCOMPARE(UserDefaults::standard().objectForKey(QStringLiteral("udv.mode")).toInt(), 0);
}

void tst_Variables::codableVariablesFallBackSilently()
{
    CodableUserDefaultsVariable<QStringList> list(QStringLiteral("udv.codable"),
                                                  {QStringLiteral("a")}, {});
    QCOMPARE(list.value(), QStringList {QStringLiteral("a")});
    UserDefaults::standard().setObject(QStringLiteral("{not json"), QStringLiteral("udv.codable"));
    QCOMPARE(list.value(), QStringList {}); // nilValue
    list.setValue({QStringLiteral("b"), QStringLiteral("c")});
    QCOMPARE(list.value(), (QStringList {QStringLiteral("b"), QStringLiteral("c")}));

    NillableCodableUserDefaultsVariable<int> nillable(QStringLiteral("udv.nillable"), std::nullopt);
    QCOMPARE(nillable.value(), std::optional<int>());
    nillable.setValue(4);
    QCOMPARE(nillable.value(), std::optional<int>(4));
    UserDefaults::standard().setObject(QStringLiteral("[\"x\"]"), QStringLiteral("udv.nillable"));
    QCOMPARE(nillable.value(), std::optional<int>());
}

void tst_Variables::combinedVariableNotifiesOncePerSourceChange()
{
    auto mode = std::make_shared<StraightVariable<int>>(2);
    auto waiting = std::make_shared<StraightVariable<bool>>(true);
    QStringList order;
    mode->addColdListener([&](int) { order << QStringLiteral("mode listener"); });
    CombinedVariable<int, StraightVariable<int>, StraightVariable<bool>> tab(
        mode, waiting, [](const StraightVariable<int> &m, const StraightVariable<bool> &w) {
            return w.value() ? 0 : m.value() + 1;
        });
    QCOMPARE(tab.value(), 0);
    QList<int> values;
    tab.addColdListener([&](int v) {
        values << v;
        order << QStringLiteral("combined");
    });
    waiting->setValue(false);
    QCOMPARE(values, QList<int> {3});
    mode->setValue(2); // unchanged result still notifies
    QCOMPARE(values, (QList<int> {3, 3}));
    QCOMPARE(order.mid(order.size() - 2),
             (QStringList {QStringLiteral("mode listener"), QStringLiteral("combined")}));
}

void tst_Variables::typeErasedHoldersForward()
{
    auto source = std::make_shared<StraightVariable<QString>>(QStringLiteral("a"));
    AnyReadOnlyVariable<QString> readOnly(source);
    AnyReadWriteVariable<QString> readWrite(source);
    QStringList seen;
    readOnly.addHotListener([&](const QString &v) { seen << v; });
    readWrite.setValue(QStringLiteral("b"));
    QCOMPARE(readOnly.value(), QStringLiteral("b"));
    QCOMPARE(seen, (QStringList {QStringLiteral("a"), QStringLiteral("b")}));
}

QTEST_GUILESS_MAIN(tst_Variables)
#include "tst_Variables.moc"
