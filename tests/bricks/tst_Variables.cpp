#include "bricks/Variables.h"

#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

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
    variable.addHotListener([&](int v) { calls << u"A%1"_s.arg(v); });
    QCOMPARE(calls, QStringList {u"A1"_s}); // hot: called before add returns
    variable.addColdListener([&](int v) { calls << u"B%1"_s.arg(v); });
    QCOMPARE(calls.size(), 1); // cold: nothing yet
    variable.setValue(1); // an equal value notifies again
    variable.setValue(2);
    QCOMPARE(calls, (QStringList {u"A1"_s, u"A1"_s, u"B1"_s, u"A2"_s, u"B2"_s}));
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
    store.setObject(17, u"udv.stored"_s);
    UserDefaultsVariable<int> stored(u"udv.stored"_s, 3, DefaultsConverters::toInt());
    QCOMPARE(stored.value(), 17); // the stored value wins; nothing written at construction

    UserDefaultsVariable<bool> flag(u"udv.flag"_s, true, DefaultsConverters::toBool());
    QCOMPARE(flag.value(), true);
    QVERIFY(!store.filePath().isEmpty());
    QList<bool> seen;
    flag.addColdListener([&](bool v) { seen << v; });
    flag.setValue(false);
    QCOMPARE(seen, QList<bool> {false});
    // A change made to the key by anyone else notifies too.
    store.setObject(true, u"udv.flag"_s);
    QCOMPARE(seen, (QList<bool> {false, true}));
    // A wrongly typed entry reads as the registered default.
    store.setObject(u"nonsense"_s, u"udv.flag"_s);
    QCOMPARE(flag.value(), true);
}

void tst_Variables::rawRepresentableVariablesUseRawValues()
{
    RawRepresentableStraightVariable<Mode> straight(Mode::One);
    QCOMPARE(straight.rawValue(), 1);
    straight.setRawValue(2);
    QCOMPARE(straight.value(), Mode::Two);

    RawRepresentableUserDefaultsVariable<Mode> persisted(
        u"udv.mode"_s, Mode::Two, [](int raw) { return raw >= 0 && raw <= 2; });
    QCOMPARE(persisted.value(), Mode::Two);
    persisted.setValue(Mode::Zero);
    QCOMPARE(UserDefaults::standard().objectForKey(u"udv.mode"_s).toInt(), 0);
}

void tst_Variables::codableVariablesFallBackSilently()
{
    CodableUserDefaultsVariable<QStringList> list(u"udv.codable"_s, {u"a"_s}, {});
    QCOMPARE(list.value(), QStringList {u"a"_s});
    UserDefaults::standard().setObject(u"{not json"_s, u"udv.codable"_s);
    QCOMPARE(list.value(), QStringList {}); // nilValue
    list.setValue({u"b"_s, u"c"_s});
    QCOMPARE(list.value(), (QStringList {u"b"_s, u"c"_s}));

    NillableCodableUserDefaultsVariable<int> nillable(u"udv.nillable"_s, std::nullopt);
    QCOMPARE(nillable.value(), std::optional<int>());
    nillable.setValue(4);
    QCOMPARE(nillable.value(), std::optional<int>(4));
    UserDefaults::standard().setObject(u"[\"x\"]"_s, u"udv.nillable"_s);
    QCOMPARE(nillable.value(), std::optional<int>());
}

void tst_Variables::combinedVariableNotifiesOncePerSourceChange()
{
    auto mode = std::make_shared<StraightVariable<int>>(2);
    auto waiting = std::make_shared<StraightVariable<bool>>(true);
    QStringList order;
    mode->addColdListener([&](int) { order << u"mode listener"_s; });
    CombinedVariable<int, StraightVariable<int>, StraightVariable<bool>> tab(
        mode, waiting, [](const StraightVariable<int> &m, const StraightVariable<bool> &w) {
            return w.value() ? 0 : m.value() + 1;
        });
    QCOMPARE(tab.value(), 0);
    QList<int> values;
    tab.addColdListener([&](int v) {
        values << v;
        order << u"combined"_s;
    });
    waiting->setValue(false);
    QCOMPARE(values, QList<int> {3});
    mode->setValue(2); // unchanged result still notifies
    QCOMPARE(values, (QList<int> {3, 3}));
    QCOMPARE(order.mid(order.size() - 2), (QStringList {u"mode listener"_s, u"combined"_s}));
}

void tst_Variables::typeErasedHoldersForward()
{
    auto source = std::make_shared<StraightVariable<QString>>(u"a"_s);
    AnyReadOnlyVariable<QString> readOnly(source);
    AnyReadWriteVariable<QString> readWrite(source);
    QStringList seen;
    readOnly.addHotListener([&](const QString &v) { seen << v; });
    readWrite.setValue(u"b"_s);
    QCOMPARE(readOnly.value(), u"b"_s);
    QCOMPARE(seen, (QStringList {u"a"_s, u"b"_s}));
}

QTEST_GUILESS_MAIN(tst_Variables)
#include "tst_Variables.moc"
