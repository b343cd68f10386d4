#pragma once

#include <unordered_map>
#include <utility>
#include <vector>

// An incremental simplex solver for linear equalities and inequalities with strengths, after
// the Cassowary algorithm: required constraints always hold, the others are satisfied as far as
// possible, a stronger one winning over any number of weaker ones' errors of similar size.
// Constraints can be added and removed one by one, and edit variables take new suggested values
// cheaply through the dual simplex, which is what a layout needs on every resize.
class ConstraintSolver
{
public:
    using Variable = int;
    using ConstraintId = int;

    enum class Relation { LessOrEqual, Equal, GreaterOrEqual };

    struct Term
    {
        Variable variable;
        double coefficient;
    };
    // The constraint reads: sum of terms + constant (relation) 0.
    struct Expression
    {
        std::vector<Term> terms;
        double constant = 0;
    };

    // Strengths are weights of the error in the objective; Required is not a weight.
    static constexpr double Required = -1;

    ConstraintSolver();

    Variable newVariable();
    // False when a required constraint cannot hold together with the ones already there. A
    // refusal found by the artificial-variable phase leaves the tableau unusable (isValid turns
    // false): the caller builds a new solver without that constraint, which is rare enough to
    // cost less than keeping an undo copy of the tableau for every addition.
    bool addConstraint(const Expression &expression, Relation relation, double strength,
                       ConstraintId *id = nullptr);
    void removeConstraint(ConstraintId id);

    void addEditVariable(Variable variable, double strength);
    void removeEditVariable(Variable variable);
    void suggestValue(Variable variable, double value);
    bool hasEditVariable(Variable variable) const { return m_edits.contains(variable); }

    double value(Variable variable) const;
    bool isValid() const { return m_valid; }
    int constraintCount() const { return int(m_constraints.size()); }

private:
    enum class SymbolType { External, Slack, Error, Dummy };
    using Symbol = int;
    static constexpr Symbol Invalid = -1;

    struct Row
    {
        double constant = 0;
        std::vector<std::pair<Symbol, double>> cells;
        double coefficientFor(Symbol s) const;
    };
    struct Tag
    {
        Symbol marker = Invalid;
        Symbol other = Invalid;
        double strength = 0;
    };
    struct Edit
    {
        ConstraintId constraint;
        Tag tag;
        double constant;
    };
    // A basic row lives in a slot, so that the column index survives pivots.
    struct Slot
    {
        Symbol basic = Invalid;
        Row row;
    };

    Symbol newSymbol(SymbolType type);
    bool isPivotable(Symbol s) const;

    // Row edits that keep the column index in step; slot -1 is a free row (objective, copies).
    void insert(Row &row, int slot, Symbol s, double coefficient);
    void insertRow(Row &row, int slot, const Row &other, double coefficient);
    void take(Row &row, int slot, Symbol s);
    void solveFor(Row &row, int slot, Symbol s);
    void solveFor(Row &row, int slot, Symbol lhs, Symbol rhs);
    void substituteInto(Row &row, int slot, Symbol s, const Row &by);

    int addBasic(Symbol basic, Row row);
    Row removeBasic(Symbol basic);
    int slotOf(Symbol basic) const;
    // The slots whose rows hold the symbol now, each once.
    const std::vector<int> &column(Symbol s);

    Row createRow(const Expression &expression, Relation relation, double strength, Tag &tag);
    Symbol chooseSubject(const Row &row, const Tag &tag) const;
    bool addWithArtificialVariable(const Row &row);
    void substitute(Symbol s, const Row &row);
    void optimize(Row &objective, int objectiveSlot = -1);
    void dualOptimize();
    Symbol enteringSymbol(const Row &objective) const;
    Symbol dualEnteringSymbol(const Row &row) const;
    int leavingSlot(Symbol entering);
    int markerLeavingSlot(Symbol marker);
    void removeMarkerEffects(Symbol marker, double strength);

    std::vector<SymbolType> m_symbolTypes;
    std::vector<Slot> m_slots;
    std::vector<int> m_freeSlots;
    std::unordered_map<Symbol, int> m_basicSlot;
    // For each symbol, the slots whose rows may hold it: substitution touches only those. The
    // lists are lazy: entries are only added, and stale ones are dropped when a list is read.
    std::vector<std::vector<int>> m_columns;
    std::vector<unsigned> m_slotStamp;
    unsigned m_stamp = 0;
    bool m_valid = true;
    std::unordered_map<ConstraintId, Tag> m_constraints;
    std::unordered_map<Variable, Edit> m_edits;
    std::vector<Symbol> m_infeasible;
    Row m_objective;
    Row *m_artificial = nullptr;
    ConstraintId m_nextConstraint = 1;
};
