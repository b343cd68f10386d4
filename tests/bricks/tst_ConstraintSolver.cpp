#include "bricks/layout/ConstraintSolver.h"

#include <QTest>

using Relation = ConstraintSolver::Relation;

class tst_ConstraintSolver : public QObject
{
    Q_OBJECT

private slots:
    void requiredEqualitiesChain();
    void strongerConstraintWins_data();
    void strongerConstraintWins();
    void inequalityBoundsAWeakPreference();
    void conflictingRequiredConstraintIsRefused();
    void editVariableFollowsSuggestions();
    void removingAConstraintReleasesItsEffect();
    void manyChainedRowsStayConsistent();
};

void tst_ConstraintSolver::requiredEqualitiesChain()
{
    ConstraintSolver s;
    const auto x = s.newVariable(), y = s.newVariable(), w = s.newVariable();
    QVERIFY(s.addConstraint({{{x, 1}}, -8}, Relation::Equal, ConstraintSolver::Required));
    // y = x + w + 4, w = 100
    QVERIFY(s.addConstraint({{{w, 1}}, -100}, Relation::Equal, ConstraintSolver::Required));
    QVERIFY(s.addConstraint({{{y, 1}, {x, -1}, {w, -1}}, -4}, Relation::Equal,
                            ConstraintSolver::Required));
    QCOMPARE(s.value(x), 8.0);
    QCOMPARE(s.value(w), 100.0);
    QCOMPARE(s.value(y), 112.0);
}

void tst_ConstraintSolver::strongerConstraintWins_data()
{
    QTest::addColumn<double>("strengthOf10");
    QTest::addColumn<double>("strengthOf20");
    QTest::addColumn<double>("expected");
    QTest::newRow("first stronger") << 1000.0 << 10.0 << 10.0;
    QTest::newRow("second stronger") << 10.0 << 1000.0 << 20.0;
    QTest::newRow("required beats any weight") << ConstraintSolver::Required << 1e9 << 10.0;
}

void tst_ConstraintSolver::strongerConstraintWins()
{
    QFETCH(double, strengthOf10);
    QFETCH(double, strengthOf20);
    QFETCH(double, expected);
    ConstraintSolver s;
    const auto x = s.newVariable();
    QVERIFY(s.addConstraint({{{x, 1}}, -10}, Relation::Equal, strengthOf10));
    QVERIFY(s.addConstraint({{{x, 1}}, -20}, Relation::Equal, strengthOf20));
    QCOMPARE(s.value(x), expected);
}

void tst_ConstraintSolver::inequalityBoundsAWeakPreference()
{
    ConstraintSolver s;
    const auto x = s.newVariable();
    QVERIFY(s.addConstraint({{{x, 1}}, 0}, Relation::Equal, 1.0)); // prefers 0
    QVERIFY(s.addConstraint({{{x, 1}}, -30}, Relation::GreaterOrEqual,
                            ConstraintSolver::Required)); // x >= 30
    QCOMPARE(s.value(x), 30.0);
    QVERIFY(s.addConstraint({{{x, 1}}, -50}, Relation::LessOrEqual, ConstraintSolver::Required));
    QVERIFY(s.addConstraint({{{x, 1}}, -80}, Relation::Equal, 100.0)); // prefers 80, capped
    QCOMPARE(s.value(x), 50.0);
}

void tst_ConstraintSolver::conflictingRequiredConstraintIsRefused()
{
    ConstraintSolver s;
    const auto x = s.newVariable(), y = s.newVariable();
    QVERIFY(s.addConstraint({{{x, 1}}, -10}, Relation::Equal, ConstraintSolver::Required));
    // x == 11 contradicts x == 10 outright: refused, and nothing changed.
    QVERIFY(!s.addConstraint({{{x, 1}}, -11}, Relation::Equal, ConstraintSolver::Required));
    QVERIFY(s.isValid());
    QCOMPARE(s.value(x), 10.0);
    QVERIFY(s.addConstraint({{{y, 1}, {x, -1}}, 0}, Relation::GreaterOrEqual,
                            ConstraintSolver::Required)); // y >= x
    // y <= 5 contradicts y >= x = 10 through another row: refused, and the solver says it
    // must be built anew.
    QVERIFY(!s.addConstraint({{{y, 1}}, -5}, Relation::LessOrEqual, ConstraintSolver::Required));
    QVERIFY(!s.isValid());
}

void tst_ConstraintSolver::editVariableFollowsSuggestions()
{
    // A container of width w holding a child pinned 8 inside on both sides, with a preferred
    // width of 100 that gives way.
    ConstraintSolver s;
    const auto w = s.newVariable(), left = s.newVariable(), width = s.newVariable();
    QVERIFY(s.addConstraint({{{left, 1}}, -8}, Relation::Equal, ConstraintSolver::Required));
    QVERIFY(s.addConstraint({{{left, 1}, {width, 1}, {w, -1}}, 8}, Relation::Equal,
                            ConstraintSolver::Required));
    QVERIFY(s.addConstraint({{{width, 1}}, -100}, Relation::Equal, 10.0));
    QVERIFY(
        s.addConstraint({{{width, 1}}, 0}, Relation::GreaterOrEqual, ConstraintSolver::Required));
    s.addEditVariable(w, 1e6);
    for (const double suggested : {300.0, 50.0, 116.0, 1000.0, 10.0}) {
        s.suggestValue(w, suggested);
        // Below 16 the required pins win over the suggestion.
        QCOMPARE(s.value(w), std::max(16.0, suggested));
        QCOMPARE(s.value(left), 8.0);
        QCOMPARE(s.value(width), std::max(0.0, suggested - 16));
    }
}

void tst_ConstraintSolver::removingAConstraintReleasesItsEffect()
{
    ConstraintSolver s;
    const auto x = s.newVariable();
    QVERIFY(s.addConstraint({{{x, 1}}, -10}, Relation::Equal, 1.0));
    ConstraintSolver::ConstraintId floor = 0, strong = 0;
    QVERIFY(s.addConstraint({{{x, 1}}, -40}, Relation::GreaterOrEqual, ConstraintSolver::Required,
                            &floor));
    QCOMPARE(s.value(x), 40.0);
    s.removeConstraint(floor);
    QCOMPARE(s.value(x), 10.0);
    QVERIFY(s.addConstraint({{{x, 1}}, -70}, Relation::Equal, 100.0, &strong));
    QCOMPARE(s.value(x), 70.0);
    s.removeConstraint(strong);
    QCOMPARE(s.value(x), 10.0);
    QCOMPARE(s.constraintCount(), 1);
}

void tst_ConstraintSolver::manyChainedRowsStayConsistent()
{
    // Rows stacked under each other with a gap, each preferring a height of 20 but at least 10.
    ConstraintSolver s;
    const auto total = s.newVariable();
    std::vector<int> tops, heights;
    for (int i = 0; i < 100; ++i) {
        tops.push_back(s.newVariable());
        heights.push_back(s.newVariable());
        if (i == 0)
            QVERIFY(
                s.addConstraint({{{tops[0], 1}}, 0}, Relation::Equal, ConstraintSolver::Required));
        else
            QVERIFY(s.addConstraint({{{tops[i], 1}, {tops[i - 1], -1}, {heights[i - 1], -1}}, -4},
                                    Relation::Equal, ConstraintSolver::Required));
        QVERIFY(s.addConstraint({{{heights[i], 1}}, -20}, Relation::Equal, 5.0));
        QVERIFY(s.addConstraint({{{heights[i], 1}}, -10}, Relation::GreaterOrEqual,
                                ConstraintSolver::Required));
    }
    QVERIFY(s.addConstraint({{{total, 1}, {tops.back(), -1}, {heights.back(), -1}}, 0},
                            Relation::Equal, ConstraintSolver::Required));
    s.addEditVariable(total, 1e6);
    s.suggestValue(total, 100 * 24 - 4);
    QCOMPARE(s.value(tops[99]), 99 * 24.0);
    // Squeezed: every height gives way evenly or not, but all stay at least 10 and sum up.
    s.suggestValue(total, 100 * 14 - 4);
    double sum = 0;
    for (int i = 0; i < 100; ++i) {
        QVERIFY(s.value(heights[i]) >= 10.0 - 1e-6);
        sum += s.value(heights[i]);
    }
    QCOMPARE(qRound(sum + 99 * 4), 100 * 14 - 4);
}

QTEST_GUILESS_MAIN(tst_ConstraintSolver)
#include "tst_ConstraintSolver.moc"
