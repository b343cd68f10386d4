#include "EditorTestBench.h"
#include "FileDialogs.h"
#include "TestSupport.h"
#include "bricks/controls/SingleLineLabel.h"
#include "mainwindow/editors/OutputSettingsFragment.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using Format = OutputFormatIndexEnum;

class tst_OutputSettingsFragment : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { EditorTestBench::setUpOnce(); }
    void settingsFollowTheFormatAndTheTextIsSaved();
};

void tst_OutputSettingsFragment::settingsFollowTheFormatAndTheTextIsSaved()
{
    EditorTestBench bench;
    QTemporaryDir folder;
    const NodePtr listed = bench.readJpeg(u"listed.jpg"_s,
                                          {u"-GPSLatitude=48.5"_s, u"-GPSLatitudeRef=N"_s,
                                           u"-GPSLongitude=2.25"_s, u"-GPSLongitudeRef=E"_s});
    QVERIFY(listed);
    DataModel &model = bench.model();
    model.sourceList.deleteAll();
    model.sourceList.add({listed->absolutePath}, false);
    const std::shared_ptr<OutputEngine> engine = OutputEngine::create(&model);
    QVERIFY(bench.show(OutputSettingsFragment::directive(model, engine)));
    engine->startListening();

    auto *copy = bench.view<QWidget>(u"copyOutputButton"_s);
    auto *save = bench.view<QWidget>(u"saveOutputButton"_s);
    auto *status = bench.view<SingleLineLabel>(u"outputStatusLabel"_s);
    const auto rowShown = [&](const char *setting) {
        return bench.view<QWidget>(QString::fromLatin1(setting) + u"Row"_s)->isVisible();
    };
    // The map format makes no text: no settings of the text formats, both commands off.
    QVERIFY(!copy->isEnabled() && !save->isEnabled());
    QVERIFY(status->stringValue().contains(u"map"_s));
    QVERIFY(!rowShown("encodingMode") && !rowShown("quoteStrings"));

    auto *format = bench.view<QComboBox>(u"outputFormatPopUp"_s);
    format->setFocus();
    QTest::keyClick(format, Qt::Key_Down);
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::TSV);
    QVERIFY(rowShown("includeColumnTitlesMode") && rowShown("quoteStrings"));
    QVERIFY(!rowShown("htmlIndentationMode") && !rowShown("jsonIndentationMode"));
    QTest::keyClick(format, Qt::Key_Down);
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::HTML);
    QVERIFY(rowShown("htmlIndentationMode") && rowShown("htmlColumnClassMode"));
    QVERIFY(!rowShown("includeColumnTitlesMode") && !rowShown("quoteStrings"));
    QTest::keyClick(format, Qt::Key_Up);

    QVERIFY(TestSupport::waitUntil([&] { return save->isEnabled(); }));
    QVERIFY(copy->isEnabled());
    QCOMPARE(status->stringValue(), u"The text of 1 item is ready."_s);

    // The dialog proposes the format's type; a name without one gets it.
    const auto saveAs = [&](const QString &target) {
        QString proposed;
        TestSupport::answerFileDialog(this, target, [&](QFileDialog *dialog) {
            proposed = dialog->selectedFiles().value(0);
        });
        QTest::mouseClick(save, Qt::LeftButton);
        return QFileInfo(proposed).fileName();
    };
    QCOMPARE(saveAs(folder.filePath(u"items"_s)), u"File List.tsv"_s);
    QFile saved(folder.filePath(u"items.tsv"_s));
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QVERIFY(saved.readAll().startsWith("\"1-listed.jpg\"\t"));

    // The two map formats, last in the popup, save the item's position.
    QTest::keyClick(format, Qt::Key_End);
    for (const auto &[key, root] :
         {std::pair {Format::GPX, "<gpx"}, std::pair {Format::KML, "<kml"}}) {
        QCOMPARE(model.outputFormat->value(), key);
        // The button may still stand for the earlier format's text until the engine has the new.
        QVERIFY(TestSupport::waitUntil([&, key] {
            const auto output = engine->currentOutput();
            return output && output->format == key && save->isEnabled()
                && engine->createOutputEngineViewModel().activeStage
                == OutputOperationTypeEnum::ready;
        }));
        const QString type = key == Format::KML ? u"kml"_s : u"gpx"_s;
        QCOMPARE(saveAs(folder.filePath(u"places"_s)), u"File List."_s + type);
        QFile placed(folder.filePath(u"places."_s + type));
        QVERIFY(placed.open(QIODevice::ReadOnly));
        const QByteArray text = placed.readAll();
        QVERIFY2(text.contains(root) && text.contains("48.5") && text.contains("2.25"),
                 text.constData());
        QTest::keyClick(format, Qt::Key_Up);
    }
    QVERIFY(bench.alerts.alerts.isEmpty());
    model.sourceList.deleteAll();
}

QTEST_MAIN(tst_OutputSettingsFragment)
#include "tst_OutputSettingsFragment.moc"
