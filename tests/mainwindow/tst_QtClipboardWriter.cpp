#include "mainwindow/QtClipboardWriter.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_QtClipboardWriter : public QObject
{
    Q_OBJECT

private slots:
    void plainTextAndHtml();
};

void tst_QtClipboardWriter::plainTextAndHtml()
{
    QtClipboardWriter writer;
    ClipboardWriter::install(&writer);
    QVERIFY(ClipboardWriter::put({u"a\tb\n"_s, std::nullopt}));
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QVERIFY(data);
    QCOMPARE(data->text(), u"a\tb\n"_s);
    QVERIFY(!data->hasHtml());

    const QString page = u"<table><tr><td>R&amp;D</td></tr></table>"_s;
    QVERIFY(ClipboardWriter::put({page, page}));
    data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->html(), page);
    QCOMPARE(data->text(), page);
    ClipboardWriter::install(nullptr);
}

QTEST_MAIN(tst_QtClipboardWriter)
#include "tst_QtClipboardWriter.moc"
