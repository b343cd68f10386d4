#include "HTMLOutputOperation.h"

#include "ItemOutputFormatter.h"

HTMLOutputOperation::HTMLOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                                         std::shared_ptr<OutputEngine> outputEngine,
                                         FlatFileListPtr flatFileList)
    : OutputFormatOperation(dataModelSnapshot, std::move(outputEngine), std::move(flatFileList),
                            std::make_unique<ItemOutputFormatter>(dataModelSnapshot))
    , m_indentationUnit(indentationUnit(dataModelSnapshot.htmlIndentationMode))
    , m_lineBreak(lineBreak(dataModelSnapshot.linebreaksMode))
{ }

QString HTMLOutputOperation::tabs(int depth) const
{
    return depth < 1 ? QString() : m_indentationUnit.repeated(depth);
}

QString HTMLOutputOperation::htmlHeader() const
{
    const QString &b = m_lineBreak;
    return QStringLiteral("<!DOCTYPE html>") + b + QStringLiteral("<html>") + b + tabs(1)
        + QStringLiteral("<head>") + b + tabs(2) + QStringLiteral("<title>File List</title>") + b
        + tabs(2) + QStringLiteral("<meta charset=\"UTF-8\">") + b + tabs(1)
        + QStringLiteral("</head>") + b + tabs(1) + QStringLiteral("<body>") + b;
}

QString HTMLOutputOperation::htmlFooter() const
{
    return tabs(1) + QStringLiteral("</body>") + m_lineBreak + QStringLiteral("</html>")
        + m_lineBreak;
}

QString HTMLOutputOperation::escaped(const QString &text)
{
    QString result;
    appendEscaped(result, text);
    return result;
}

void HTMLOutputOperation::appendEscaped(QString &out, const QString &text)
{
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&':
            out += QLatin1String("&amp;");
            break;
        case u'<':
            out += QLatin1String("&lt;");
            break;
        case u'>':
            out += QLatin1String("&gt;");
            break;
        case u'"':
            out += QLatin1String("&quot;");
            break;
        case u'\'':
            out += QLatin1String("&#39;");
            break;
        case u'\u00A2':
            out += QLatin1String("&cent;");
            break;
        case u'\u00A3':
            out += QLatin1String("&pound;");
            break;
        case u'\u00A5':
            out += QLatin1String("&yen;");
            break;
        case u'\u00A9':
            out += QLatin1String("&copy;");
            break;
        case u'\u00AE':
            out += QLatin1String("&reg;");
            break;
        case u'\u20AC':
            out += QLatin1String("&euro;");
            break;
        default:
            out += c;
        }
    }
}

QString HTMLOutputOperation::cellOpening(const QString &columnId, int counter) const
{
    // The blank before the equals sign is part of the markup that editors of the output know.
    switch (dataModelSnapshot.htmlColumnClassMode) {
    case 2:
        return tabs(4) + QStringLiteral("<td class =\"qrd_td_") + columnId + QStringLiteral("\">");
    case 1:
        return tabs(4) + QStringLiteral("<td class =\"qrd_td_") + QString::number(counter + 1)
            + QStringLiteral("\">");
    default:
        return tabs(4) + QStringLiteral("<td>");
    }
}

QString HTMLOutputOperation::formatOneItem(const QString &text, const QString &columnId,
                                           int counter) const
{
    QString cell = cellOpening(columnId, counter);
    appendEscaped(cell, text);
    return cell + QStringLiteral("</td>") + m_lineBreak;
}

QString HTMLOutputOperation::headerCell(const QString &columnKey, int counter) const
{
    QString open;
    switch (dataModelSnapshot.htmlColumnIdHeaderMode) {
    case 2:
        open
            = QStringLiteral("<th id=\"qrd_th_") + QString::number(counter) + QStringLiteral("\">");
        break;
    case 3:
        open = QStringLiteral("<th id=\"qrd_th_") + columnKey + QStringLiteral("\">");
        break;
    default:
        open = QStringLiteral("<th>");
    }
    return tabs(4) + open + columnTitle(columnKey, false) + QStringLiteral("</th>") + m_lineBreak;
}

void HTMLOutputOperation::main()
{
    if (isCancelled())
        return;
    const QStringList &columns = dataModelSnapshot.columnList;
    const QString &b = m_lineBreak;
    m_outputString = htmlHeader();
    m_outputString += tabs(2) + QStringLiteral("<table>") + b;
    if (dataModelSnapshot.htmlColumnIdHeaderMode != 0) {
        m_outputString += tabs(3) + QStringLiteral("<tr>") + b;
        for (qsizetype i = 0; i < columns.size(); ++i)
            m_outputString += headerCell(columns[i], int(i));
        m_outputString += tabs(3) + QStringLiteral("</tr>") + b;
    }
    const QString rowOpen = tabs(3) + QStringLiteral("<tr>") + b;
    const QString rowClose = tabs(3) + QStringLiteral("</tr>") + b;
    const QString cellClose = QStringLiteral("</td>") + b;
    // The same cells as formatOneItem, built straight into the page: a list can be long.
    QStringList cellOpenings;
    for (qsizetype i = 0; i < columns.size(); ++i)
        cellOpenings << cellOpening(columns[i], int(i));
    for (const NodePtr &node : flatFileList->files) {
        if (isCancelled())
            return;
        m_outputString += rowOpen;
        for (qsizetype i = 0; i < columns.size(); ++i) {
            m_outputString += cellOpenings[i];
            appendEscaped(m_outputString, formattedValue(*node, columns[i]));
            m_outputString += cellClose;
        }
        m_outputString += rowClose;
        reserveForAll();
        fileDone();
    }
    m_outputString += tabs(2) + QStringLiteral("</table>") + b;
    m_outputString += htmlFooter();
    finish();
}
