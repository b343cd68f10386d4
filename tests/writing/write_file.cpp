// Writes tags to one file as Palomet does, for the tests that must write as another user or stop
// a write from outside:
//   write_file [--served] JOURNAL-FOLDER PATH TAG VALUE [TAG VALUE ...]
// Prints the message of a refusal and exits 1; exits 0 when the file was written.
#include "writing/ExifWriteManager.h"
#include "writing/WriteJournal.h"
#include "writing/WriteWorker.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool served = !arguments.isEmpty() && arguments.first() == QStringLiteral("--served");
    if (served)
        arguments.removeFirst();
    if (arguments.size() < 2 || arguments.size() % 2 != 0) {
        std::fprintf(stderr, "usage: write_file [--served] JOURNAL-FOLDER PATH TAG VALUE ...\n");
        return 2;
    }
    WriteJournal::setDirectory(arguments.takeFirst());
    const QString path = arguments.takeFirst();

    std::optional<QString> message;
    bool written = false;
    if (served) {
        WriteWorker worker;
        written = ExifWriteManager::shared().setTagsOfFile(path, arguments, message, worker);
    } else {
        written = ExifWriteManager::shared().setTagsOfFile(path, arguments, message);
    }
    if (!written)
        std::printf("%s\n", qPrintable(message.value_or(QStringLiteral("(no message)"))));
    return written ? 0 : 1;
}
