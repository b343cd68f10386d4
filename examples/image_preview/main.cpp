// The image preview on its own, for the files named on the command line:
//     image_preview [--manual] [--screenshot file.png] FILE...
// A grid of up to six when several files are given (one image first with --manual); the arrow
// keys page or step, a click on a cell shows that file alone, a click on the single image opens
// the larger view. With --screenshot the window is saved once its pictures are in, and the
// program ends.

#include "bricks/Assembly.h"
#include "mainwindow/preview/ImagePreview.h"
#include "mainwindow/preview/ImagePreviewView.h"
#include "mainwindow/preview/NonExpandingImageView.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

namespace B = BuildDirectivesNamespace;

namespace {

bool picturesAreIn(const ImagePreviewView &view)
{
    const auto &views = view.imageViews();
    return !views.isEmpty()
        && std::all_of(views.begin(), views.end(),
                       [](const NonExpandingImageView *image) { return image->hasImage(); });
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("image_preview"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows Palomet's image preview for files."));
    parser.addHelpOption();
    const QCommandLineOption manual(QStringLiteral("manual"),
                                    QStringLiteral("Start with one image; the grid on request."));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Save the window to <file> and quit."),
                                        QStringLiteral("file"));
    parser.addOptions({manual, screenshot});
    parser.addPositionalArgument(QStringLiteral("files"), QStringLiteral("The files to show."),
                                 QStringLiteral("FILE..."));
    parser.process(app);

    QStringList paths;
    for (const QString &argument : parser.positionalArguments())
        paths << QFileInfo(argument).absoluteFilePath();
    if (paths.isEmpty()) {
        std::fprintf(stderr, "image_preview: name at least one file\n");
        return 2;
    }

    ImagePreviewConfiguration configuration;
    configuration.layoutPolicy = parser.isSet(manual)
        ? ImagePreviewLayoutPolicy::manual
        : ImagePreviewLayoutPolicy::automaticSelectionCount;
    const auto pathsVariable = std::make_shared<StraightVariable<QStringList>>(paths);
    const auto selection = std::make_shared<StraightVariable<int>>(0);
    const auto assembly = build({B::ImagePreview(configuration, pathsVariable, selection)});
    assembly->activate();
    auto *view = qobject_cast<ImagePreviewView *>(assembly->view());

    QWidget window;
    window.setWindowTitle(QStringLiteral("Image Preview"));
    auto *layout = new QVBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 8);
    layout->addWidget(view, 1);
    auto *caption = new QLabel;
    caption->setAlignment(Qt::AlignCenter);
    layout->addWidget(caption);
    selection->addHotListener([caption, paths](const int &index) {
        caption->setText(QStringLiteral("%1 of %2: %3")
                             .arg(index + 1)
                             .arg(paths.size())
                             .arg(QFileInfo(paths.value(index)).fileName()));
    });
    window.resize(640, 460);
    window.show();
    view->setFocus();

    if (parser.isSet(screenshot)) {
        const QString target = parser.value(screenshot);
        auto *poll = new QTimer(&app);
        auto *waited = new QElapsedTimer;
        waited->start();
        QObject::connect(poll, &QTimer::timeout, &app, [&, view, poll, waited, target] {
            const bool ready = picturesAreIn(*view);
            if (!ready && waited->elapsed() < 20000)
                return;
            poll->stop();
            delete waited;
            const bool saved = ready && window.grab().save(target);
            if (!saved)
                std::fprintf(stderr, "image_preview: %s\n",
                             ready ? "could not save the screenshot"
                                   : "the pictures did not arrive");
            QCoreApplication::exit(saved ? 0 : 1);
        });
        poll->start(50);
    }
    return app.exec();
}
