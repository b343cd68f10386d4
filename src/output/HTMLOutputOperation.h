#pragma once

#include "OutputFormatOperation.h"

// The list as one HTML page holding one table: an optional header row, then a row for each
// item. The id and class names are there for whoever styles the page afterwards.
class HTMLOutputOperation : public OutputFormatOperation
{
public:
    HTMLOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                        std::shared_ptr<OutputEngine> outputEngine, FlatFileListPtr flatFileList);

    void main() override;

    QString tabs(int depth) const;
    QString htmlHeader() const;
    QString htmlFooter() const;
    // One cell, its text escaped; counter is the column's index from 0.
    QString formatOneItem(const QString &text, const QString &columnId, int counter) const;

    static QString escaped(const QString &text);

private:
    // The start of a cell up to its text, by htmlColumnClassMode.
    QString cellOpening(const QString &columnId, int counter) const;
    static void appendEscaped(QString &out, const QString &text);
    QString headerCell(const QString &columnKey, int counter) const;

    const QString m_indentationUnit;
    const QString m_lineBreak;
};
