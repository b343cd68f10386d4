#include "EditorTestBench.h"

#include "Fixtures.h"
#include "TestSupport.h"
#include "WriteFixtures.h"
#include "bricks/Assembly.h"
#include "bricks/ViewTree.h"
#include "bricks/walls/WallDirectives.h"
#include "commons/ApplicationStart.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"
#include "writing/WriteEngine.h"

#include <QTest>

using namespace Qt::StringLiterals;

void EditorTestBench::setUpOnce()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    ApplicationStart::installWritePath();
}

EditorTestBench::EditorTestBench()
    : m_model(std::make_unique<DataModel>())
{
    AlertPresenter::install(&alerts);
    ClipboardWriter::install(&clipboard);
    Beeper::install(&beeper);
    ChangeManager::setDataModel(m_model.get());
}

EditorTestBench::~EditorTestBench()
{
    waitForWrites();
    delete m_root;
    m_assembly.reset();
    ChangeManager::setDataModel(nullptr);
    Beeper::install(nullptr);
    ClipboardWriter::install(nullptr);
    AlertPresenter::install(nullptr);
}

NodePtr EditorTestBench::readJpeg(const QString &name, const QStringList &exifToolArguments)
{
    return Fixtures::readNode(Fixtures::makeJpeg(
        m_directory.path(), u"%1-%2"_s.arg(++m_files).arg(name), exifToolArguments));
}

QString EditorTestBench::tagInFile(const QString &path, const QString &tag)
{
    return QString::fromUtf8(
               WriteFixtures::exifTool({u"-s3"_s, u"-n"_s, u"-"_s + tag, path}).standardOutput)
        .trimmed();
}

bool EditorTestBench::waitForWrites()
{
    WriteEngine::shared().waitForCompletion();
    // Each file's re-read announces the selection once more, on the main thread.
    QTest::qWait(50);
    return !WriteEngine::shared().hasPendingWrites();
}

QWidget *EditorTestBench::show(const BuildDirectiveList &directive, int width)
{
    m_assembly = build({BuildDirectivesNamespace::FragmentStack {directive}});
    m_assembly->activate();
    m_root = m_assembly->view();
    m_root->resize(width, m_root->sizeHint().height());
    ViewTree::layoutSubtreeIfNeeded(m_root);
    m_root->show();
    if (!QTest::qWaitForWindowExposed(m_root))
        return nullptr;
    m_root->activateWindow();
    return m_root;
}
