#pragma once

#include "location/Placemark.h"

#include <QFrame>
#include <QList>

class QListWidget;

// The list of place suggestions under the search field. It never takes the keyboard focus, so
// typing stays in the field; a click marks a row and starts nothing, Return in the field does.
class MapSearchResultsPopup : public QFrame
{
    Q_OBJECT

public:
    explicit MapSearchResultsPopup(QWidget *parent = nullptr);

    void setResults(const QList<Placemark> &results);
    void setSelectedRow(int row);
    int rowCount() const;
    // Shows the list below the widget, as wide as the column.
    void showBelow(QWidget *anchor);
    QListWidget *list() const { return m_list; }

private:
    QListWidget *m_list;
};
