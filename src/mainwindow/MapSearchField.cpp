#include "MapSearchField.h"

#include "MapSearchResultsPopup.h"
#include "MapSymbols.h"
#include "map/MapSearch.h"

#include <QAction>
#include <QIcon>
#include <QKeyEvent>

MapSearchField::MapSearchField(MapSearch &search, QWidget *parent)
    : QLineEdit(parent)
    , m_search(search)
    , m_popup(new MapSearchResultsPopup(this))
{
    setPlaceholderText(tr("Search for a place or go to a coordinate"));
    setToolTip(tr("Type a place name, or a coordinate such as 48.8584, 2.2945, and press Return"));
    setClearButtonEnabled(true);
    addAction(QIcon::fromTheme(QStringLiteral("edit-find"), MapSymbols::magnifier()),
              QLineEdit::LeadingPosition);
    setCompleter(nullptr);
    setMinimumWidth(220);

    m_search.fieldHasFocus = [this] {
        return hasFocus();
    };
    connect(this, &QLineEdit::textEdited, this,
            [this](const QString &text) { m_search.controlTextDidChange(text); });
    // The clear button empties the field without an edit signal.
    connect(this, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (text.isEmpty() && !m_search.fieldText->value().isEmpty())
            m_search.controlTextDidChange(text);
    });
    m_search.fieldText->addColdListener([this](const QString &text) {
        if (text != this->text())
            setText(text);
    });
    m_search.searchResults->addColdListener(
        [this](const QList<Placemark> &results) { m_popup->setResults(results); });
    m_search.selectedSearchResultIndex->addColdListener(
        [this](int row) { m_popup->setSelectedRow(row); });
    m_search.popoverShown->addColdListener([this](bool shown) {
        if (shown) {
            m_popup->showBelow(this);
            setFocus(Qt::OtherFocusReason);
        } else {
            m_popup->hide();
        }
    });
}

MapSearchField::~MapSearchField()
{
    m_search.fieldHasFocus = nullptr;
}

void MapSearchField::keyPressEvent(QKeyEvent *event)
{
    std::optional<MapSearch::Command> command;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        command = MapSearch::Command::insertNewline;
        break;
    case Qt::Key_Down:
        command = MapSearch::Command::moveDown;
        break;
    case Qt::Key_Up:
        command = MapSearch::Command::moveUp;
        break;
    case Qt::Key_Escape:
        command = MapSearch::Command::cancelOperation;
        break;
    default:
        break;
    }
    if (command && m_search.doCommandBySelector(*command)) {
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void MapSearchField::focusOutEvent(QFocusEvent *event)
{
    // The list belongs to the field; it goes when the user works elsewhere.
    if (event->reason() != Qt::PopupFocusReason)
        m_search.closePopover();
    QLineEdit::focusOutEvent(event);
}
