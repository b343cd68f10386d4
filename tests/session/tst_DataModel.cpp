#include "session/DataModel.h"

#include "RecordingDoubles.h"
#include "TestSupport.h"
#include "platform/AlertPresenter.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_DataModel : public QObject
{
    Q_OBJECT

private slots:
    void firstLaunchDefaults();
    void wronglyTypedPreferencesReadAsTheDefaults();
    void persistedSettingsSurviveARestartButSortModesDoNot();
    void previewTabIndexFollowsBothSources();
    void sourceListRefusesListedPathsAndTheirContents();
    void columnMovesSurviveARestart();

private:
    QTemporaryDir m_dir;
};

void tst_DataModel::firstLaunchDefaults()
{
    UserDefaults defaults(m_dir.filePath(u"first.json"_s));
    DataModel model(defaults);
    QCOMPARE(model.columnList.value(), (QStringList {u"name"_s, u"absolute_path"_s}));
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::CSV);
    QVERIFY(model.sourceList.value().isEmpty());
    QCOMPARE(model.previewTabIndex->value(), 0);
    QCOMPARE(model._stepperLabel->value(), u"Whatever"_s);
    QCOMPARE(model._currentPinIndex->value(), -1);
    QCOMPARE(model._currentPinName->value(), u"No Pin"_s);
    QCOMPARE(model.htmlIndentationMode->value(), 1);
    QCOMPARE(model.jsonDateFormatMode->value(), 1);
    QCOMPARE(model.infoPaneHeight->value(), 200.0);
    QCOMPARE(model.processSubFolders->value(), false);
    QCOMPARE(model.quoteStrings->value(), true);
    // Registered defaults are never written to disk: a store on the same file without the
    // registrations finds none of them.
    QVERIFY(defaults.synchronize());
    const UserDefaults unregistered(defaults.filePath());
    for (const char *key : {"quoteStrings", "brisk_columns", "infoPaneHeight", "outputFormat"})
        QVERIFY2(!unregistered.objectForKey(QLatin1String(key)).isValid(), key);
}

// A damaged preferences file must not keep the application from starting: every value of the
// wrong type reads as its default.
void tst_DataModel::wronglyTypedPreferencesReadAsTheDefaults()
{
    const QString path = m_dir.filePath(u"damaged.json"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"outputFormat": "banana", "processFiles": "yes", "previewMode": [3],
                   "infoPaneHeight": "tall", "quoteStrings": 17, "jsonIndentationMode": 99.5})");
    file.close();
    UserDefaults defaults(path);
    DataModel model(defaults);
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::CSV);
    QCOMPARE(model.processFiles->value(), true);
    QCOMPARE(model.previewMode->value(), 0);
    QCOMPARE(model.previewTabIndex->value(), 0);
    QCOMPARE(model.infoPaneHeight->value(), 200.0);
    QCOMPARE(model.quoteStrings->value(), true);
    QCOMPARE(model.jsonIndentationMode->value(), 1);
    defaults.setObject(42, u"outputFormat"_s); // no such format
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::CSV);
}

void tst_DataModel::persistedSettingsSurviveARestartButSortModesDoNot()
{
    const QString path = m_dir.filePath(u"restart.json"_s);
    {
        UserDefaults defaults(path);
        DataModel model(defaults);
        model.outputFormat->setValue(OutputFormatIndexEnum::JSON);
        model.processSubFolders->setValue(true);
        model.infoPaneHeight->setValue(321.5);
        model.setFirstSortMode(SortMode::cityDescending);
        defaults.synchronize();
    }
    UserDefaults defaults(path);
    // The historical spelling of the key is what is stored.
    QCOMPARE(defaults.objectForKey(u"prodcessSubfolders"_s).toBool(), true);
    QCOMPARE(defaults.objectForKey(u"outputFormat"_s).toInt(), 5);
    DataModel model(defaults);
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::JSON);
    QCOMPARE(model.infoPaneHeight->value(), 321.5);
    QCOMPARE(model.firstSortMode(), SortMode::nameAndSequenceAscending);
}

void tst_DataModel::previewTabIndexFollowsBothSources()
{
    UserDefaults defaults(m_dir.filePath(u"tabs.json"_s));
    DataModel model(defaults);
    QList<int> seen;
    model.previewTabIndex->addColdListener([&](int v) { seen << v; });
    model.previewMode->setValue(2);
    QCOMPARE(model.previewTabIndex->value(), 0); // still waiting for data
    model.waitingForData->setValue(false);
    QCOMPARE(model.previewTabIndex->value(), 3);
    model.previewMode->setValue(0);
    QCOMPARE(model.previewTabIndex->value(), 1);
    QCOMPARE(seen, (QList<int> {0, 3, 1}));
}

void tst_DataModel::sourceListRefusesListedPathsAndTheirContents()
{
    RecordingPresenter presenter;
    AlertPresenter::install(&presenter);
    UserDefaults defaults(m_dir.filePath(u"sources.json"_s));
    DataModel model(defaults);
    model.waitingForData->setValue(false);

    model.sourceList.add({u"/photos"_s, u"/other/file.jpg"_s}, true);
    QVERIFY(presenter.alerts.isEmpty());
    QVERIFY(model.waitingForData->value());
    // A folder twice, and a file inside a listed folder, are refused; the rest is added.
    model.sourceList.add({u"/photos"_s, u"/photos/2020/a.jpg"_s, u"/other"_s, u"/photosbook"_s},
                         true);
    QCOMPARE(model.sourceList.value(),
             (QStringList {u"/photos"_s, u"/other/file.jpg"_s, u"/other"_s, u"/photosbook"_s}));
    QCOMPARE(presenter.alerts.size(), 1);
    QCOMPARE(presenter.alerts.first().title, u"Some files could not be added."_s);
    QCOMPARE(presenter.alerts.first().buttons, QStringList {u"OK"_s});
    // Not interactive: refused silently.
    model.sourceList.add({u"/photos"_s}, false);
    QCOMPARE(presenter.alerts.size(), 1);
    AlertPresenter::install(nullptr);
}

void tst_DataModel::columnMovesSurviveARestart()
{
    const QString path = m_dir.filePath(u"columns.json"_s);
    {
        UserDefaults defaults(path);
        DataModel model(defaults);
        model.columnList.add(u"City"_s);
        model.columnList.add(u"Country"_s);
        // name, absolute_path, City, Country: move City and Country to the top.
        model.columnList.move({2, 3}, 0);
        model.columnList.deleteAt(3);
    }
    UserDefaults defaults(path);
    DataModel model(defaults);
    QCOMPARE(model.columnList.value(), (QStringList {u"City"_s, u"Country"_s, u"name"_s}));
}

QTEST_GUILESS_MAIN(tst_DataModel)
#include "tst_DataModel.moc"
