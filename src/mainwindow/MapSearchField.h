#pragma once

#include <QLineEdit>

class MapSearch;
class MapSearchResultsPopup;

// The search field of the map: it hands typing and the keys Return, Up, Down and Escape to
// MapSearch and shows its suggestions in a list below itself. It keeps the focus while the
// list is open, and turns off the line edit's own completion.
class MapSearchField : public QLineEdit
{
    Q_OBJECT

public:
    explicit MapSearchField(MapSearch &search, QWidget *parent = nullptr);
    ~MapSearchField() override;

    MapSearchResultsPopup *resultsPopup() const { return m_popup; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    MapSearch &m_search;
    MapSearchResultsPopup *m_popup;
};
