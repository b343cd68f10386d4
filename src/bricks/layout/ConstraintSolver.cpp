#include "ConstraintSolver.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
constexpr double Epsilon = 1.0e-8;
bool nearZero(double value)
{
    return std::fabs(value) < Epsilon;
}
} // namespace

double ConstraintSolver::Row::coefficientFor(Symbol s) const
{
    const auto it = std::lower_bound(cells.begin(), cells.end(), s,
                                     [](const auto &cell, Symbol v) { return cell.first < v; });
    return it != cells.end() && it->first == s ? it->second : 0;
}

ConstraintSolver::ConstraintSolver() = default;

ConstraintSolver::Symbol ConstraintSolver::newSymbol(SymbolType type)
{
    m_symbolTypes.push_back(type);
    m_columns.emplace_back();
    return Symbol(m_symbolTypes.size() - 1);
}

ConstraintSolver::Variable ConstraintSolver::newVariable()
{
    return newSymbol(SymbolType::External);
}

bool ConstraintSolver::isPivotable(Symbol s) const
{
    const SymbolType type = m_symbolTypes[s];
    return type == SymbolType::Slack || type == SymbolType::Error;
}

// Cells are kept sorted by symbol, so that adding one row to another is a merge.
void ConstraintSolver::insert(Row &row, int slot, Symbol s, double coefficient)
{
    const auto it = std::lower_bound(row.cells.begin(), row.cells.end(), s,
                                     [](const auto &cell, Symbol v) { return cell.first < v; });
    if (it != row.cells.end() && it->first == s) {
        it->second += coefficient;
        if (nearZero(it->second))
            row.cells.erase(it);
        return;
    }
    if (nearZero(coefficient))
        return;
    row.cells.insert(it, {s, coefficient});
    if (slot >= 0)
        m_columns[s].push_back(slot);
}

void ConstraintSolver::insertRow(Row &row, int slot, const Row &other, double coefficient)
{
    row.constant += other.constant * coefficient;
    if (other.cells.size() < 4) {
        for (const auto &cell : other.cells)
            insert(row, slot, cell.first, cell.second * coefficient);
        return;
    }
    std::vector<std::pair<Symbol, double>> merged;
    merged.reserve(row.cells.size() + other.cells.size());
    auto a = row.cells.begin();
    auto b = other.cells.begin();
    while (a != row.cells.end() || b != other.cells.end()) {
        if (b == other.cells.end() || (a != row.cells.end() && a->first < b->first)) {
            merged.push_back(*a++);
            continue;
        }
        const Symbol s = b->first;
        const double added = b->second * coefficient;
        ++b;
        if (a != row.cells.end() && a->first == s) {
            const double sum = a->second + added;
            ++a;
            if (!nearZero(sum))
                merged.emplace_back(s, sum);
        } else if (!nearZero(added)) {
            merged.emplace_back(s, added);
            if (slot >= 0)
                m_columns[s].push_back(slot);
        }
    }
    row.cells = std::move(merged);
}

void ConstraintSolver::take(Row &row, int slot, Symbol s)
{
    const auto it = std::lower_bound(row.cells.begin(), row.cells.end(), s,
                                     [](const auto &cell, Symbol v) { return cell.first < v; });
    if (it == row.cells.end() || it->first != s)
        return;
    row.cells.erase(it);
    Q_UNUSED(slot)
}

// Turns "a*s + rest = 0" into "s = -rest/a".
void ConstraintSolver::solveFor(Row &row, int slot, Symbol s)
{
    const double factor = -1.0 / row.coefficientFor(s);
    take(row, slot, s);
    row.constant *= factor;
    for (auto &cell : row.cells)
        cell.second *= factor;
}

// Turns "lhs = rest" into "rhs = ...", lhs taking its place among the cells.
void ConstraintSolver::solveFor(Row &row, int slot, Symbol lhs, Symbol rhs)
{
    insert(row, slot, lhs, -1.0);
    solveFor(row, slot, rhs);
}

void ConstraintSolver::substituteInto(Row &row, int slot, Symbol s, const Row &by)
{
    const double coefficient = row.coefficientFor(s);
    if (coefficient == 0)
        return;
    take(row, slot, s);
    insertRow(row, slot, by, coefficient);
}

int ConstraintSolver::addBasic(Symbol basic, Row row)
{
    int slot;
    if (!m_freeSlots.empty()) {
        slot = m_freeSlots.back();
        m_freeSlots.pop_back();
    } else {
        slot = int(m_slots.size());
        m_slots.emplace_back();
    }
    m_slots[slot].basic = basic;
    m_slots[slot].row = std::move(row);
    for (const auto &cell : m_slots[slot].row.cells)
        m_columns[cell.first].push_back(slot);
    m_basicSlot[basic] = slot;
    return slot;
}

ConstraintSolver::Row ConstraintSolver::removeBasic(Symbol basic)
{
    const auto it = m_basicSlot.find(basic);
    const int slot = it->second;
    m_basicSlot.erase(it);
    Row row = std::move(m_slots[slot].row);
    m_slots[slot].basic = Invalid;
    m_slots[slot].row = Row();
    m_freeSlots.push_back(slot);
    return row;
}

int ConstraintSolver::slotOf(Symbol basic) const
{
    const auto it = m_basicSlot.find(basic);
    return it == m_basicSlot.end() ? -1 : it->second;
}

const std::vector<int> &ConstraintSolver::column(Symbol s)
{
    if (m_slotStamp.size() < m_slots.size())
        m_slotStamp.resize(m_slots.size(), 0);
    ++m_stamp;
    std::vector<int> &list = m_columns[s];
    size_t kept = 0;
    for (const int slot : list) {
        if (m_slotStamp[slot] == m_stamp || m_slots[slot].basic == Invalid
            || m_slots[slot].row.coefficientFor(s) == 0)
            continue;
        m_slotStamp[slot] = m_stamp;
        list[kept++] = slot;
    }
    list.resize(kept);
    return list;
}

ConstraintSolver::Row ConstraintSolver::createRow(const Expression &expression, Relation relation,
                                                  double strength, Tag &tag)
{
    Row row;
    row.constant = expression.constant;
    for (const Term &term : expression.terms) {
        if (nearZero(term.coefficient))
            continue;
        const int slot = slotOf(term.variable);
        if (slot >= 0)
            insertRow(row, -1, m_slots[slot].row, term.coefficient);
        else
            insert(row, -1, term.variable, term.coefficient);
    }
    const bool required = strength == Required;
    tag.strength = strength;
    if (relation != Relation::Equal) {
        const double coefficient = relation == Relation::LessOrEqual ? 1.0 : -1.0;
        const Symbol slack = newSymbol(SymbolType::Slack);
        tag.marker = slack;
        insert(row, -1, slack, coefficient);
        if (!required) {
            const Symbol error = newSymbol(SymbolType::Error);
            tag.other = error;
            insert(row, -1, error, -coefficient);
            insert(m_objective, -1, error, strength);
        }
    } else if (!required) {
        const Symbol plus = newSymbol(SymbolType::Error);
        const Symbol minus = newSymbol(SymbolType::Error);
        tag.marker = plus;
        tag.other = minus;
        insert(row, -1, plus, -1.0);
        insert(row, -1, minus, 1.0);
        insert(m_objective, -1, plus, strength);
        insert(m_objective, -1, minus, strength);
    } else {
        const Symbol dummy = newSymbol(SymbolType::Dummy);
        tag.marker = dummy;
        insert(row, -1, dummy, 1.0);
    }
    if (row.constant < 0) {
        row.constant = -row.constant;
        for (auto &cell : row.cells)
            cell.second = -cell.second;
    }
    return row;
}

ConstraintSolver::Symbol ConstraintSolver::chooseSubject(const Row &row, const Tag &tag) const
{
    for (const auto &cell : row.cells)
        if (m_symbolTypes[cell.first] == SymbolType::External)
            return cell.first;
    if (tag.marker != Invalid && isPivotable(tag.marker) && row.coefficientFor(tag.marker) < 0)
        return tag.marker;
    if (tag.other != Invalid && isPivotable(tag.other) && row.coefficientFor(tag.other) < 0)
        return tag.other;
    return Invalid;
}

bool ConstraintSolver::addConstraint(const Expression &expression, Relation relation,
                                     double strength, ConstraintId *id)
{
    Tag tag;
    Row row = createRow(expression, relation, strength, tag);
    Symbol subject = chooseSubject(row, tag);
    if (subject == Invalid) {
        bool allDummies = true;
        for (const auto &cell : row.cells)
            allDummies = allDummies && m_symbolTypes[cell.first] == SymbolType::Dummy;
        if (allDummies) {
            // Only required equalities come here, and they added nothing to the objective.
            if (!nearZero(row.constant))
                return false;
            subject = tag.marker;
        }
    }
    if (subject == Invalid) {
        if (!addWithArtificialVariable(row)) {
            m_valid = false;
            return false;
        }
    } else {
        solveFor(row, -1, subject);
        substitute(subject, row);
        addBasic(subject, std::move(row));
    }
    const ConstraintId newId = m_nextConstraint++;
    m_constraints.emplace(newId, tag);
    if (id)
        *id = newId;
    optimize(m_objective);
    return true;
}

bool ConstraintSolver::addWithArtificialVariable(const Row &row)
{
    const Symbol art = newSymbol(SymbolType::Slack);
    addBasic(art, row);
    Row artificial = row;
    m_artificial = &artificial;
    optimize(artificial);
    m_artificial = nullptr;
    const bool success = nearZero(artificial.constant);

    if (slotOf(art) >= 0) {
        Row basicRow = removeBasic(art);
        if (basicRow.cells.empty())
            return success;
        Symbol entering = Invalid;
        for (const auto &cell : basicRow.cells) {
            if (isPivotable(cell.first)) {
                entering = cell.first;
                break;
            }
        }
        if (entering == Invalid)
            return false;
        solveFor(basicRow, -1, art, entering);
        substitute(entering, basicRow);
        addBasic(entering, std::move(basicRow));
    }
    // The artificial symbol is not basic any more: drop it from every row.
    const std::vector<int> slots = column(art);
    for (const int slot : slots)
        take(m_slots[slot].row, slot, art);
    m_columns[art].clear();
    take(m_objective, -1, art);
    return success;
}

void ConstraintSolver::substitute(Symbol s, const Row &row)
{
    const std::vector<int> slots = column(s);
    for (const int slot : slots) {
        Slot &target = m_slots[slot];
        substituteInto(target.row, slot, s, row);
        if (m_symbolTypes[target.basic] != SymbolType::External && target.row.constant < 0)
            m_infeasible.push_back(target.basic);
    }
    m_columns[s].clear();
    substituteInto(m_objective, -1, s, row);
    if (m_artificial)
        substituteInto(*m_artificial, -1, s, row);
}

ConstraintSolver::Symbol ConstraintSolver::enteringSymbol(const Row &objective) const
{
    // The lowest-numbered improving symbol (Bland's rule), so that pivoting cannot cycle.
    Symbol best = Invalid;
    for (const auto &cell : objective.cells) {
        if (cell.second < 0 && m_symbolTypes[cell.first] != SymbolType::Dummy
            && (best == Invalid || cell.first < best))
            best = cell.first;
    }
    return best;
}

int ConstraintSolver::leavingSlot(Symbol entering)
{
    double ratio = std::numeric_limits<double>::max();
    int found = -1;
    for (const int slot : column(entering)) {
        const Slot &candidate = m_slots[slot];
        if (m_symbolTypes[candidate.basic] == SymbolType::External)
            continue;
        const double coefficient = candidate.row.coefficientFor(entering);
        if (coefficient >= 0)
            continue;
        const double r = -candidate.row.constant / coefficient;
        if (r < ratio || (found >= 0 && r == ratio && candidate.basic < m_slots[found].basic)) {
            ratio = r;
            found = slot;
        }
    }
    return found;
}

void ConstraintSolver::optimize(Row &objective, int)
{
    for (;;) {
        const Symbol entering = enteringSymbol(objective);
        if (entering == Invalid)
            return;
        const int slot = leavingSlot(entering);
        if (slot < 0)
            qFatal("ConstraintSolver: the objective is unbounded");
        const Symbol leaving = m_slots[slot].basic;
        Row row = removeBasic(leaving);
        solveFor(row, -1, leaving, entering);
        substitute(entering, row);
        addBasic(entering, std::move(row));
    }
}

ConstraintSolver::Symbol ConstraintSolver::dualEnteringSymbol(const Row &row) const
{
    Symbol entering = Invalid;
    double ratio = std::numeric_limits<double>::max();
    for (const auto &cell : row.cells) {
        if (cell.second <= 0 || m_symbolTypes[cell.first] == SymbolType::Dummy)
            continue;
        const double r = m_objective.coefficientFor(cell.first) / cell.second;
        if (r < ratio || (entering != Invalid && r == ratio && cell.first < entering)) {
            ratio = r;
            entering = cell.first;
        }
    }
    return entering;
}

void ConstraintSolver::dualOptimize()
{
    while (!m_infeasible.empty()) {
        const Symbol leaving = m_infeasible.back();
        m_infeasible.pop_back();
        const int slot = slotOf(leaving);
        if (slot < 0 || m_slots[slot].row.constant >= 0)
            continue;
        const Symbol entering = dualEnteringSymbol(m_slots[slot].row);
        if (entering == Invalid)
            qFatal("ConstraintSolver: no entering symbol in the dual simplex");
        Row row = removeBasic(leaving);
        solveFor(row, -1, leaving, entering);
        substitute(entering, row);
        addBasic(entering, std::move(row));
    }
}

int ConstraintSolver::markerLeavingSlot(Symbol marker)
{
    const double max = std::numeric_limits<double>::max();
    double r1 = max, r2 = max;
    int first = -1, second = -1, third = -1;
    for (const int slot : column(marker)) {
        const Slot &candidate = m_slots[slot];
        const double c = candidate.row.coefficientFor(marker);
        if (c == 0)
            continue;
        if (m_symbolTypes[candidate.basic] == SymbolType::External) {
            third = slot;
        } else if (c < 0) {
            const double r = -candidate.row.constant / c;
            if (r < r1) {
                r1 = r;
                first = slot;
            }
        } else {
            const double r = candidate.row.constant / c;
            if (r < r2) {
                r2 = r;
                second = slot;
            }
        }
    }
    return first >= 0 ? first : (second >= 0 ? second : third);
}

void ConstraintSolver::removeMarkerEffects(Symbol marker, double strength)
{
    const int slot = slotOf(marker);
    if (slot >= 0)
        insertRow(m_objective, -1, m_slots[slot].row, -strength);
    else
        insert(m_objective, -1, marker, -strength);
}

void ConstraintSolver::removeConstraint(ConstraintId id)
{
    const auto it = m_constraints.find(id);
    if (it == m_constraints.end())
        return;
    const Tag tag = it->second;
    m_constraints.erase(it);

    if (tag.marker != Invalid && m_symbolTypes[tag.marker] == SymbolType::Error)
        removeMarkerEffects(tag.marker, tag.strength);
    if (tag.other != Invalid && m_symbolTypes[tag.other] == SymbolType::Error)
        removeMarkerEffects(tag.other, tag.strength);

    if (slotOf(tag.marker) >= 0) {
        removeBasic(tag.marker);
    } else {
        const int slot = markerLeavingSlot(tag.marker);
        if (slot < 0)
            qFatal("ConstraintSolver: no row to remove a constraint from");
        const Symbol leaving = m_slots[slot].basic;
        Row row = removeBasic(leaving);
        solveFor(row, -1, leaving, tag.marker);
        substitute(tag.marker, row);
    }
    m_columns[tag.marker].clear();
    optimize(m_objective);
}

// The edit starts at the variable's present value, so that adding it moves nothing.
void ConstraintSolver::addEditVariable(Variable variable, double strength)
{
    Q_ASSERT(strength != Required);
    ConstraintId id = 0;
    const double current = value(variable);
    addConstraint({{{variable, 1.0}}, -current}, Relation::Equal, strength, &id);
    m_edits.emplace(variable, Edit {id, m_constraints.at(id), current});
}

void ConstraintSolver::removeEditVariable(Variable variable)
{
    const auto it = m_edits.find(variable);
    if (it == m_edits.end())
        return;
    const ConstraintId id = it->second.constraint;
    m_edits.erase(it);
    removeConstraint(id);
}

void ConstraintSolver::suggestValue(Variable variable, double value)
{
    const auto it = m_edits.find(variable);
    if (it == m_edits.end())
        return;
    Edit &edit = it->second;
    const double delta = value - edit.constant;
    edit.constant = value;
    if (delta == 0)
        return;

    if (const int slot = slotOf(edit.tag.marker); slot >= 0) {
        m_slots[slot].row.constant -= delta;
        if (m_slots[slot].row.constant < 0)
            m_infeasible.push_back(edit.tag.marker);
    } else if (const int other = slotOf(edit.tag.other); other >= 0) {
        m_slots[other].row.constant += delta;
        if (m_slots[other].row.constant < 0)
            m_infeasible.push_back(edit.tag.other);
    } else {
        for (const int slot : column(edit.tag.marker)) {
            Slot &target = m_slots[slot];
            const double c = target.row.coefficientFor(edit.tag.marker);
            target.row.constant += delta * c;
            if (target.row.constant < 0 && m_symbolTypes[target.basic] != SymbolType::External)
                m_infeasible.push_back(target.basic);
        }
    }
    dualOptimize();
}

double ConstraintSolver::value(Variable variable) const
{
    const int slot = slotOf(variable);
    return slot < 0 ? 0 : m_slots[slot].row.constant;
}
