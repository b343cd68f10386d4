#pragma once

#include <QWidget>

#include <functional>

class QLabel;
class QToolButton;

// A row of the source, column and tag lists: the name, elided in the middle, an optional grey
// abbreviation after it, and a small button at the right end (delete, or add for the tag list).
// The labels let the mouse through, so rows are still selected and dragged by their table.
class ListTableCellView : public QWidget
{
    Q_OBJECT

public:
    ListTableCellView(const QString &name, const QString &abbreviation, const QString &symbol,
                      const QString &buttonToolTip, std::function<void()> buttonAction,
                      QWidget *parent = nullptr);

    QLabel *nameLabel = nullptr;
    QLabel *abbreviationLabel = nullptr;
    QToolButton *button = nullptr;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void elideName();
    void applyTheme();

    QString m_name;
};
