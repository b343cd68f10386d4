#include "WriteFixtures.h"

#include "platform/Resources.h"
#include "writing/ExifWriteManager.h"
#include "writing/WriteJournal.h"
#include "writing/WriteWorker.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>
#include <optional>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace WriteFixtures;

Q_DECLARE_METATYPE(IptcText)

namespace {

// Tags that ExifTool changes by design whenever it rewrites a file.
const QSet<QString> changedByDesign = {
    u"System:FileSize"_s,
    u"System:FileAccessDate"_s,
    u"System:FileInodeChangeDate"_s,
    // ExifTool signs an XMP packet it writes.
    u"XMP-x:XMPToolkit"_s,
    // The digest follows the IPTC record; checked for agreement separately.
    u"Photoshop:IPTCDigest"_s,
    u"File:CurrentIPTCDigest"_s,
    // Offsets and sizes of the parts that move or grow when metadata is added.
    u"IFD0:StripOffsets"_s,
    u"QuickTime:MediaDataOffset"_s,
    u"QuickTime:MediaDataSize"_s,
};

// Names that gain a value when ExifTool adds a metadata box to a QuickTime file: the new box's
// handler. Their earlier values must all still be there.
const QSet<QString> growByDesign = {u"QuickTime:HandlerType"_s};

const QStringList gpsNames
    = {u"GPSLatitude"_s, u"GPSLongitude"_s, u"GPSLatitudeRef"_s, u"GPSLongitudeRef"_s,
       u"GPSPosition"_s, u"GPSVersionID"_s, u"GPSCoordinates"_s};

using Expected = QMap<QString, QString>;

// A list written as one text, its items separated by '|'.
QStringList split(const char *text)
{
    return QString::fromUtf8(text).split(u'|');
}

bool sameTime(const timespec &a, const timespec &b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

QStringList entriesOf(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

// A small file system of its own, for a disk that fills up and a folder that can't be written.
// Needs the right to mount (root); otherwise reason() says why not.
class ScratchMount
{
public:
    ScratchMount(const QString &directory, qint64 bytes)
        : m_directory(directory)
    {
        QDir().mkpath(directory);
        const QByteArray options = "size=" + QByteArray::number(bytes);
        if (::mount("tmpfs", QFile::encodeName(directory).constData(), "tmpfs", 0,
                    options.constData())
            == 0)
            m_mounted = true;
        else
            m_reason = u"can't mount a small file system here ("_s
                + QString::fromLocal8Bit(strerror(errno)) + u")"_s;
    }
    ~ScratchMount()
    {
        if (m_mounted)
            umount2(QFile::encodeName(m_directory).constData(), MNT_DETACH);
    }
    bool makeReadOnly()
    {
        return ::mount(nullptr, QFile::encodeName(m_directory).constData(), nullptr,
                       MS_REMOUNT | MS_RDONLY, nullptr)
            == 0;
    }
    bool mounted() const { return m_mounted; }
    const QString &reason() const { return m_reason; }

private:
    QString m_directory;
    bool m_mounted = false;
    QString m_reason;
};

// The pid of this process's running one-shot write worker, if there is one.
std::optional<pid_t> runningWorker()
{
    const QString self = QString::number(getpid());
    const QStringList processes = QDir(u"/proc"_s).entryList(QDir::Dirs);
    for (const QString &pid : processes) {
        QFile stat(u"/proc/"_s + pid + u"/stat"_s);
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QString line = QString::fromUtf8(stat.readAll());
        const QStringList fields = line.mid(line.lastIndexOf(u')') + 2).split(u' ');
        if (fields.size() < 2 || fields[1] != self)
            continue;
        QFile commandLine(u"/proc/"_s + pid + u"/cmdline"_s);
        const QByteArray command
            = commandLine.open(QIODevice::ReadOnly) ? commandLine.readAll() : "";
        if (command.contains("set_tag.pl") && !command.contains("--serve"))
            return pid_t(pid.toInt());
    }
    return std::nullopt;
}

} // namespace

class tst_ExifWriteManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void writeKeepsEverythingElse_data();
    void writeKeepsEverythingElse();

    void failureLeavesFileUntouched_data();
    void failureLeavesFileUntouched();

    void workerKilledMidWriteLeavesFileUntouched_data();
    void workerKilledMidWriteLeavesFileUntouched();
    void writeThroughSymbolicLinkKeepsTheLink();
    void hardLinkedFileIsWrittenInPlace();

    void writeWithoutRootRights_data();
    void writeWithoutRootRights();

    void parseExifToolError_data();
    void parseExifToolError();

private:
    QString freshDirectory();

    QTemporaryDir m_root;
    int m_directoryCount = 0;
    WriteWorker m_worker;
};

void tst_ExifWriteManager::initTestCase()
{
    QVERIFY(m_root.isValid());
    WriteJournal::setDirectory(m_root.filePath(u"journal"_s));
    // Folders that a test chmods or mounts over must be reachable by the worker.
    QFile::setPermissions(m_root.path(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther
                              | QFile::ExeOther);
}

QString tst_ExifWriteManager::freshDirectory()
{
    const QString directory = m_root.filePath(QString::number(++m_directoryCount));
    QDir().mkpath(directory);
    return directory;
}

void tst_ExifWriteManager::writeKeepsEverythingElse_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<IptcText>("iptcText");
    QTest::addColumn<QStringList>("setUp");
    QTest::addColumn<QStringList>("pairs");
    QTest::addColumn<Expected>("expected");
    QTest::addColumn<QStringList>("writtenNames");

    const QStringList southEast
        = {u"GPSLatitude#"_s,    u"-33.512345"_s, u"GPSLongitude#"_s,  u"151.200001"_s,
           u"GPSLongitudeRef"_s, u"East"_s,       u"GPSLatitudeRef"_s, u"South"_s};
    const Expected southEastInExif = {{u"GPS:GPSLatitude"_s, u"33.512345"_s},
                                      {u"GPS:GPSLatitudeRef"_s, u"S"_s},
                                      {u"GPS:GPSLongitude"_s, u"151.200001"_s},
                                      {u"GPS:GPSLongitudeRef"_s, u"E"_s}};
    const QStringList utf8Names = {u"CodedCharacterSet"_s, u"EnvelopeRecordVersion"_s};
    const QStringList mwgNames = split("City|Country|State|Location|Province-State|"
                                       "Country-PrimaryLocationName|Sub-location|"
                                       "LocationShownCity|LocationShownCountryName|"
                                       "LocationShownProvinceState|LocationShownSublocation");
    const QStringList tokyo = {u"City"_s, u"東京"_s};

    {
        Expected expected = southEastInExif;
        expected.insert(u"IPTC:City"_s, u"Zürich 東京"_s);
        expected.insert(u"IPTC:CodedCharacterSet"_s, u"\x1b%G"_s);
        QTest::newRow("jpg: GPS with references, IPTC city outside Latin-1")
            << u"jpg"_s << IptcText::Latin1 << QStringList()
            << (southEast + QStringList {u"City"_s, u"Zürich 東京"_s}) << expected
            << (gpsNames + utf8Names + QStringList {u"City"_s});
    }
    // Untouched IPTC text reads as the same characters, however it was stored.
    const Expected tokyoInIptc
        = {{u"IPTC:City"_s, u"東京"_s}, {u"IPTC:CodedCharacterSet"_s, u"\x1b%G"_s}};
    QTest::newRow("jpg: undeclared UTF-8 and Latin-1 IPTC beside a city outside Latin-1")
        << u"jpg"_s << IptcText::UndeclaredMixed << QStringList() << tokyo << tokyoInIptc
        << (utf8Names + QStringList {u"City"_s});
    QTest::newRow("tif: declared UTF-8 IPTC beside a city outside Latin-1")
        << u"tif"_s << IptcText::DeclaredUtf8 << QStringList() << tokyo << tokyoInIptc
        << QStringList {u"City"_s};
    QTest::newRow("jpg: undeclared UTF-8 and Latin-1 IPTC beside a Latin-1 city")
        << u"jpg"_s << IptcText::UndeclaredMixed << QStringList()
        << QStringList {u"City"_s, u"Zürich"_s} << Expected {{u"IPTC:City"_s, u"Zürich"_s}}
        << QStringList {u"City"_s};
    {
        const QStringList pairs = split(
            "GPSLatitude#|48.8584|GPSLongitude#|-2.2945|GPSLongitudeRef|West|GPSLatitudeRef|North|"
            "XMP:GPSLatitude|48.8584|XMP:GPSLongitude|-2.2945|MWG:City|Köln|MWG:Country|"
            "Deutschland|MWG:State|NRW|MWG:Location|Domplatte|"
            "XMP-dc:Description|Zeile 1\nZeile 2 – ünïcødé 東京");
        Expected expected;
        for (const QString &pair :
             split("GPS:GPSLatitude=48.8584|GPS:GPSLatitudeRef=N|GPS:GPSLongitude=2.2945|"
                   "GPS:GPSLongitudeRef=W|XMP-exif:GPSLatitude=48.8584|"
                   "XMP-exif:GPSLongitude=-2.2945|IPTC:City=Köln|XMP-photoshop:City=Köln|"
                   "IPTC:Country-PrimaryLocationName=Deutschland|IPTC:Province-State=NRW|"
                   "IPTC:Sub-location=Domplatte|XMP-iptcCore:Location=Domplatte|"
                   "XMP-dc:Description=Zeile 1\nZeile 2 – ünïcødé 東京"))
            expected.insert(pair.section(u'=', 0, 0), pair.section(u'=', 1));
        QTest::newRow("jpg: MWG location, XMP GPS, a line feed")
            << u"jpg"_s << IptcText::Latin1 << QStringList() << pairs << expected
            << (gpsNames + mwgNames + utf8Names + QStringList {u"Description"_s});
    }
    {
        // Several shown places are the user's list: a city write leaves it whole.
        const QStringList places = {u"-XMP-iptcExt:LocationShown+={City=London,CountryCode=GB}"_s,
                                    u"-XMP-iptcExt:LocationShown+={City=Paris,CountryCode=FR}"_s,
                                    u"-XMP-iptcExt:LocationShown+={City=Berlin,CountryCode=DE}"_s};
        const Expected expected
            = {{u"IPTC:City"_s, u"Zürich"_s}, {u"XMP-photoshop:City"_s, u"Zürich"_s}};
        QTest::newRow("jpg: MWG city keeps a list of shown places")
            << u"jpg"_s << IptcText::Latin1 << places << QStringList {u"MWG:City"_s, u"Zürich"_s}
            << expected << QStringList {u"City"_s};
    }
    {
        Expected expected = southEastInExif;
        expected.insert(u"IPTC:Province-State"_s, u"Île-de-France"_s);
        expected.insert(u"XMP-photoshop:State"_s, u"Île-de-France"_s);
        QTest::newRow("tif: GPS and MWG state")
            << u"tif"_s << IptcText::Latin1 << QStringList()
            << (southEast + QStringList {u"MWG:State"_s, u"Île-de-France"_s}) << expected
            << (gpsNames + mwgNames);
    }
    {
        Expected expected = southEastInExif;
        expected.insert(u"IPTC:City"_s, u"Zürich"_s);
        QTest::newRow("png: GPS and city")
            << u"png"_s << IptcText::Latin1 << QStringList()
            << (southEast + QStringList {u"City"_s, u"Zürich"_s}) << expected
            << (gpsNames + QStringList {u"City"_s, u"ApplicationRecordVersion"_s});
    }
    {
        // An empty expectation means absent: MWG edits IPTC only where a record exists.
        const Expected expected = {{u"XMP-photoshop:City"_s, u"東京"_s},
                                   {u"IPTC:City"_s, QString()},
                                   {u"IPTC:CodedCharacterSet"_s, QString()}};
        QTest::newRow("png: MWG city outside Latin-1 adds no IPTC")
            << u"png"_s << IptcText::Latin1 << QStringList()
            << QStringList {u"MWG:City"_s, u"東京"_s} << expected << mwgNames;
    }
    {
        Expected expected = southEastInExif;
        expected.insert(u"XMP-exif:GPSLatitude"_s, u"-33.512345"_s);
        expected.insert(u"XMP-photoshop:City"_s, u"東京"_s);
        const QStringList pairs
            = southEast + QStringList {u"XMP:GPSLatitude"_s, u"-33.512345"_s, u"XMP:GPSLongitude"_s,
                                       u"151.200001"_s,      u"MWG:City"_s,   u"東京"_s};
        QTest::newRow("heic: GPS in EXIF and XMP, MWG city")
            << u"heic"_s << IptcText::Latin1 << QStringList() << pairs << expected
            << (gpsNames + mwgNames);
    }

    // These types hold no IPTC, where ExifTool would drop a plain IPTC name without a word.
    const QStringList plainLocation
        = {u"City"_s,         u"Zürich"_s,   u"Province-State"_s, u"Zürich Kanton"_s,
           u"Sub-location"_s, u"Altstadt"_s, u"Country"_s,        u"Schweiz"_s};
    const Expected locationInXmp = {{u"XMP-photoshop:City"_s, u"Zürich"_s},
                                    {u"XMP-photoshop:State"_s, u"Zürich Kanton"_s},
                                    {u"XMP-iptcCore:Location"_s, u"Altstadt"_s},
                                    {u"XMP-photoshop:Country"_s, u"Schweiz"_s}};
    for (const char *extension : {"heic", "webp"}) {
        QTest::addRow("%s: plain location names go to XMP", extension)
            << QString::fromLatin1(extension) << IptcText::Latin1 << QStringList() << plainLocation
            << locationInXmp << mwgNames;
    }
    // These hold no EXIF either: the position goes to XMP, signed.
    Expected positionInXmp = {{u"XMP-exif:GPSLatitude"_s, u"-33.512345"_s},
                              {u"XMP-exif:GPSLongitude"_s, u"151.200001"_s},
                              {u"XMP-photoshop:City"_s, u"Zürich"_s},
                              {u"GPS:GPSLatitude"_s, QString()}};
    for (const char *extension : {"gif", "pdf", "xmp"}) {
        QTest::addRow("%s: position and city in XMP", extension)
            << QString::fromLatin1(extension) << IptcText::Latin1 << QStringList()
            << (southEast + QStringList {u"City"_s, u"Zürich"_s}) << positionInXmp
            << (gpsNames + mwgNames);
    }

    const QStringList quickTimePairs
        = {u"GPSLatitude#"_s, u"-33.512345"_s, u"GPSLongitude#"_s, u"151.200001"_s};
    const auto quickTimeExpected = [](const QString &coordinates) {
        return Expected {{u"Keys:GPSCoordinates"_s, coordinates},
                         {u"UserData:GPSCoordinates"_s, coordinates},
                         {u"ItemList:GPSCoordinates"_s, coordinates},
                         {u"Composite:GPSLatitude"_s, u"-33.512345"_s},
                         {u"Composite:GPSLongitude"_s, u"151.200001"_s}};
    };
    {
        // Signed as the editors format them, with a plus sign and padding.
        const QStringList pairs
            = {u"GPSLatitude#"_s, u"+48.858400"_s, u"GPSLongitude#"_s, u"+2.294500"_s};
        const Expected expected = {{u"Keys:GPSCoordinates"_s, u"48.8584 2.2945"_s},
                                   {u"Composite:GPSLatitude"_s, u"48.8584"_s},
                                   {u"Composite:GPSLongitude"_s, u"2.2945"_s}};
        QTest::newRow("mp4: position with plus signs")
            << u"mp4"_s << IptcText::Latin1 << QStringList() << pairs << expected << gpsNames;
    }
    QTest::newRow("mp4: QuickTime position")
        << u"mp4"_s << IptcText::Latin1 << QStringList() << quickTimePairs
        << quickTimeExpected(u"-33.512345 151.200001"_s) << gpsNames;
    {
        Expected expected = quickTimeExpected(u"-33.512345 151.200001 123.5"_s);
        expected.insert(u"Composite:GPSAltitude"_s, u"123.5"_s);
        QTest::newRow("mov: QuickTime position keeps the altitude")
            << u"mov"_s << IptcText::Latin1 << QStringList() << quickTimePairs << expected
            << gpsNames;
    }
    {
        Expected expected = quickTimeExpected(u"-33.512345 151.200001"_s);
        expected.insert(u"XMP-photoshop:City"_s, u"Zürich"_s);
        QTest::newRow("m4a: QuickTime position and city")
            << u"m4a"_s << IptcText::Latin1 << QStringList()
            << (quickTimePairs + QStringList {u"City"_s, u"Zürich"_s}) << expected
            << (gpsNames + mwgNames);
    }
}

void tst_ExifWriteManager::writeKeepsEverythingElse()
{
    QFETCH(QString, extension);
    QFETCH(IptcText, iptcText);
    QFETCH(QStringList, setUp);
    QFETCH(QStringList, pairs);
    QFETCH(Expected, expected);
    QFETCH(QStringList, writtenNames);

    const QString directory = freshDirectory();
    const QString path = directory + u"/fixture."_s + extension;
    QString made = makeFixture(path, iptcText);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    if (!setUp.isEmpty())
        QCOMPARE(
            exifTool(QStringList {u"-q"_s, u"-overwrite_original"_s} + setUp + QStringList {path})
                .exitCode,
            0);

    // An odd mode, an old date with nanoseconds, the user's extended attributes and, where
    // allowed, someone else's file.
    QFile::setPermissions(path,
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup
                              | QFile::WriteGroup | QFile::ReadOther);
    made = setExtendedAttributes(path);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    const timespec before = {1299215167, 123456789};
    setModificationTime(path, before);
    if (geteuid() == 0)
        QVERIFY(chown(QFile::encodeName(path).constData(), 65534, 65534) == 0);
    struct stat statusBefore;
    QVERIFY(stat(QFile::encodeName(path).constData(), &statusBefore) == 0);
    const ExtendedAttributes attributesBefore = extendedAttributes(path);

    const MetadataDump dumpBefore = metadataDump(path);
    const QByteArray contentBefore = contentHash(path);
    QVERIFY(!contentBefore.isEmpty());

    std::optional<QString> message;
    const bool written = ExifWriteManager::shared().setTagsOfFile(path, pairs, message, m_worker);
    QVERIFY2(written, qPrintable(message.value_or(u"(no message)"_s)));

    const QJsonObject numeric = numericValues(path);
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        const QString actual = dumpValue(numeric.value(it.key()));
        QVERIFY2(actual == it.value(),
                 qPrintable(it.key() + u": "_s + actual + u" instead of "_s + it.value()));
    }

    const MetadataDump dumpAfter = metadataDump(path);
    QStringList keys = dumpBefore.keys() + dumpAfter.keys();
    keys.removeDuplicates();
    for (const QString &key : std::as_const(keys)) {
        const QString name = key.section(u':', -1);
        if (changedByDesign.contains(key) || writtenNames.contains(name))
            continue;
        QStringList valuesBefore = dumpBefore.value(key);
        QStringList valuesAfter = dumpAfter.value(key);
        if (growByDesign.contains(key)) {
            for (const QString &value : std::as_const(valuesBefore)) {
                QVERIFY2(valuesAfter.removeOne(value),
                         qPrintable(key + u" lost '"_s + value + u"'"_s));
            }
            continue;
        }
        valuesBefore.sort();
        valuesAfter.sort();
        QVERIFY2(valuesBefore == valuesAfter,
                 qPrintable(key + u" changed from '"_s + valuesBefore.join(u" | "_s) + u"' to '"_s
                            + valuesAfter.join(u" | "_s) + u"'"_s));
    }
    const QStringList digest = dumpAfter.value(u"Photoshop:IPTCDigest"_s);
    if (!digest.isEmpty())
        QCOMPARE(digest, dumpAfter.value(u"File:CurrentIPTCDigest"_s));

    QCOMPARE(contentHash(path), contentBefore);

    struct stat statusAfter;
    QVERIFY(stat(QFile::encodeName(path).constData(), &statusAfter) == 0);
    QVERIFY(sameTime(statusAfter.st_mtim, before));
    QCOMPARE(statusAfter.st_mode, statusBefore.st_mode);
    QCOMPARE(statusAfter.st_uid, statusBefore.st_uid);
    QCOMPARE(statusAfter.st_gid, statusBefore.st_gid);
    QCOMPARE(extendedAttributes(path), attributesBefore);

    // No backup or temporary copy beside it: it would show up in the next scan.
    QCOMPARE(entriesOf(directory), QStringList {QFileInfo(path).fileName()});
}

enum class Failure {
    ReadOnlyFile,
    ReadOnlyFolder,
    Directory,
    VanishedFile,
    UnwritableType,
    DiskFull,
    BadValue,
};
Q_DECLARE_METATYPE(Failure)

void tst_ExifWriteManager::failureLeavesFileUntouched_data()
{
    QTest::addColumn<Failure>("failure");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QStringList>("acceptedMessages");
    QTest::addColumn<QStringList>("pairs");

    const QStringList pairs
        = {u"GPSLatitude#"_s, u"-33.5"_s, u"GPSLatitudeRef"_s, u"South"_s, u"City"_s, u"Zürich"_s};

    QTest::newRow("read-only file")
        << Failure::ReadOnlyFile << u"jpg"_s
        << QStringList {u"File is read-only"_s, u"Permission denied"_s} << pairs;
    // As root only a read-only file system refuses; others get a folder without write access.
    QTest::newRow("read-only folder")
        << Failure::ReadOnlyFolder << u"jpg"_s
        << QStringList {u"Permission denied"_s,
                        u"Error: Error creating file (Read-only file system)"_s}
        << pairs;
    QTest::newRow("directory") << Failure::Directory << u"jpg"_s
                               << QStringList {u"Path is a directory"_s} << pairs;
    QTest::newRow("vanished file")
        << Failure::VanishedFile << u"jpg"_s << QStringList {u"File not found"_s} << pairs;
    QTest::newRow("disk full") << Failure::DiskFull << u"tif"_s << QStringList {u"Disk is full"_s}
                               << pairs;

    const QList<std::pair<const char *, QString>> unwritable = {
        {"mp3", u"Error: Writing of MP3 files is not yet supported"_s},
        {"wav", u"Error: Can't currently write RIFF WAVE files"_s},
        {"flac", u"Error: Writing of FLAC files is not yet supported"_s},
        {"mkv", u"Error: Writing of MKV files is not yet supported"_s},
        // Nothing changed is no success: a format that can't hold the tags says so.
        {"ppm", u"Error: PPM files can't hold GPSLatitude, City"_s},
    };
    for (const auto &[extension, message] : unwritable)
        QTest::addRow("unwritable type %s", extension)
            << Failure::UnwritableType << QString::fromLatin1(extension) << QStringList {message}
            << pairs;

    // A coordinate that is not a number is refused by name, never written as 0 or 12.
    for (const char *value : {"abc", "12,5", ""}) {
        QTest::addRow("latitude \"%s\"", value)
            << Failure::BadValue << u"jpg"_s
            << QStringList {u"Error: GPSLatitude must be a number of degrees, not \""_s
                            + QString::fromLatin1(value) + u"\""_s}
            << QStringList {u"GPSLatitude#"_s, QString::fromLatin1(value), u"City"_s, u"Zürich"_s};
    }
    QTest::newRow("longitude out of range")
        << Failure::BadValue << u"jpg"_s
        << QStringList {u"Error: GPSLongitude must lie between -180 and 180 degrees, not \"181\""_s}
        << QStringList {u"GPSLongitude#"_s, u"181"_s};
}

void tst_ExifWriteManager::failureLeavesFileUntouched()
{
    QFETCH(Failure, failure);
    QFETCH(QString, extension);
    QFETCH(QStringList, acceptedMessages);
    QFETCH(QStringList, pairs);

    QString directory = freshDirectory();
    std::optional<ScratchMount> mount;
    if (failure == Failure::DiskFull || (failure == Failure::ReadOnlyFolder && geteuid() == 0)) {
        directory += u"/mount"_s;
        // Room for the file but not for the copy that a rewrite makes beside it.
        mount.emplace(directory, 3 * 1024 * 1024);
        if (!mount->mounted())
            QSKIP(qPrintable(mount->reason()));
    }

    QString path = directory + u"/fixture."_s + extension;
    const QString made
        = failure == Failure::DiskFull ? makeLargeFixture(path, 600) : makeFixture(path);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    setModificationTime(path, {1299215167, 123456789});

    switch (failure) {
    case Failure::ReadOnlyFile:
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        break;
    case Failure::ReadOnlyFolder:
        if (mount)
            QVERIFY(mount->makeReadOnly());
        else
            QFile::setPermissions(directory, QFile::ReadOwner | QFile::ExeOwner);
        break;
    case Failure::Directory:
        path = directory;
        break;
    case Failure::VanishedFile:
        QFile::remove(path);
        break;
    case Failure::DiskFull: {
        const qint64 size = QFileInfo(path).size();
        QVERIFY2(size > 1024 * 1024 && size < 3 * 1024 * 1024, "the file must fill half the disk");
        break;
    }
    case Failure::UnwritableType:
    case Failure::BadValue:
        break;
    }

    const QStringList entriesBefore = entriesOf(directory);
    const QByteArray bytesBefore = QFileInfo(path).isFile() ? fileHash(path) : QByteArray();
    const timespec timeBefore = modificationTime(path);

    std::optional<QString> message;
    const bool written = ExifWriteManager::shared().setTagsOfFile(path, pairs, message);

    if (failure == Failure::ReadOnlyFolder && !mount)
        QFile::setPermissions(directory, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    QVERIFY(!written);
    QVERIFY(message.has_value());
    QVERIFY2(acceptedMessages.contains(*message), qPrintable(*message));
    QCOMPARE(entriesOf(directory), entriesBefore);
    if (!bytesBefore.isEmpty()) {
        QCOMPARE(fileHash(path), bytesBefore);
        QVERIFY(sameTime(modificationTime(path), timeBefore));
    }
}

void tst_ExifWriteManager::workerKilledMidWriteLeavesFileUntouched_data()
{
    QTest::addColumn<bool>("served");
    QTest::addColumn<QString>("message");

    QTest::newRow("one-shot worker") << false << u"Unknown error (exit code 9)"_s;
    QTest::newRow("long-running worker")
        << true << u"The write worker stopped unexpectedly; the file was left as it was"_s;
}

void tst_ExifWriteManager::workerKilledMidWriteLeavesFileUntouched()
{
    QFETCH(bool, served);
    QFETCH(QString, message);

    const QString directory = freshDirectory();
    const QString path = directory + u"/large.tif"_s;
    const QString made = makeLargeFixture(path, 20000);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    const QByteArray bytesBefore = fileHash(path);
    const auto newFileExists = [&] {
        return !QDir(directory)
                    .entryList({u".large.tif.palomet-new-*"_s}, QDir::Files | QDir::Hidden)
                    .isEmpty();
    };

    WriteWorker worker;
    std::atomic_bool done = false;
    bool written = true;
    std::optional<QString> answer;
    std::thread writer([&] {
        const QStringList pairs = {u"City"_s, u"Zürich"_s};
        written = served ? ExifWriteManager::shared().setTagsOfFile(path, pairs, answer, worker)
                         : ExifWriteManager::shared().setTagsOfFile(path, pairs, answer);
        done = true;
    });

    // Kill the worker while its new file is being written: stopped first, it cannot finish
    // between the look and the kill.
    bool killed = false;
    while (!done && !killed) {
        const std::optional<pid_t> pid = served
            ? (worker.processIdentifier() > 0 ? std::optional(worker.processIdentifier())
                                              : std::nullopt)
            : runningWorker();
        if (pid && kill(*pid, SIGSTOP) == 0) {
            if (newFileExists())
                killed = kill(*pid, SIGKILL) == 0;
            else
                kill(*pid, SIGCONT);
        }
        std::this_thread::yield();
    }
    writer.join();
    if (!killed)
        QSKIP("the write finished before the worker could be stopped");

    QVERIFY(!written);
    QCOMPARE(answer.value_or(QString()), message);
    QCOMPARE(fileHash(path), bytesBefore);
    QCOMPARE(entriesOf(directory), QStringList {u"large.tif"_s});

    // The next file gets a worker of its own.
    std::optional<QString> nextAnswer;
    QVERIFY(ExifWriteManager::shared().setTagsOfFile(path, {u"City"_s, u"Zürich"_s}, nextAnswer,
                                                     worker));
}

void tst_ExifWriteManager::writeThroughSymbolicLinkKeepsTheLink()
{
    const QString directory = freshDirectory();
    const QString target = directory + u"/target.jpg"_s;
    const QString link = directory + u"/link.jpg"_s;
    const QString made = makeFixture(target);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    QVERIFY(QFile::link(u"target.jpg"_s, link));
    const timespec before = {1299215167, 123456789};
    setModificationTime(target, before);

    std::optional<QString> message;
    QVERIFY(ExifWriteManager::shared().setTagsOfFile(link, {u"City"_s, u"Zürich"_s}, message));

    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(QFileInfo(link).symLinkTarget(), QFileInfo(target).absoluteFilePath());
    QCOMPARE(dumpValue(numericValues(target).value(u"IPTC:City"_s)), u"Zürich"_s);
    QVERIFY(sameTime(modificationTime(target), before));
    QCOMPARE(entriesOf(directory), (QStringList {u"link.jpg"_s, u"target.jpg"_s}));
}

void tst_ExifWriteManager::hardLinkedFileIsWrittenInPlace()
{
    const QString directory = freshDirectory();
    const QString path = directory + u"/photo.jpg"_s;
    const QString link = directory + u"/same photo.jpg"_s;
    QString made = makeFixture(path);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    made = setExtendedAttributes(path);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    QVERIFY(::link(QFile::encodeName(path).constData(), QFile::encodeName(link).constData()) == 0);
    const timespec before = {1299215167, 123456789};
    setModificationTime(path, before);
    struct stat statusBefore;
    QVERIFY(stat(QFile::encodeName(path).constData(), &statusBefore) == 0);
    const ExtendedAttributes attributesBefore = extendedAttributes(path);

    std::optional<QString> message;
    QVERIFY2(
        ExifWriteManager::shared().setTagsOfFile(link, {u"City"_s, u"Zürich"_s}, message, m_worker),
        qPrintable(message.value_or(QString())));

    // One file under two names, as before, both showing the new city.
    struct stat statusAfter;
    QVERIFY(stat(QFile::encodeName(path).constData(), &statusAfter) == 0);
    QCOMPARE(statusAfter.st_ino, statusBefore.st_ino);
    QCOMPARE(statusAfter.st_nlink, nlink_t(2));
    QVERIFY(sameTime(statusAfter.st_mtim, before));
    QCOMPARE(extendedAttributes(path), attributesBefore);
    QCOMPARE(dumpValue(numericValues(path).value(u"IPTC:City"_s)), u"Zürich"_s);
    QCOMPARE(entriesOf(directory), (QStringList {u"photo.jpg"_s, u"same photo.jpg"_s}));
    QVERIFY(QDir(WriteJournal::directory()).isEmpty());
}

// Root may do what a user may not; these writes run as "nobody", in a folder open to all.
void tst_ExifWriteManager::writeWithoutRootRights_data()
{
    QTest::addColumn<bool>("ownFile");
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<QString>("message");

    QTest::newRow("own file with attributes") << true << false << QString();
    QTest::newRow("someone else's writable file") << false << false << QString();
    QTest::newRow("read-only file") << true << true << u"File is read-only"_s;
}

void tst_ExifWriteManager::writeWithoutRootRights()
{
    QFETCH(bool, ownFile);
    QFETCH(bool, readOnly);
    QFETCH(QString, message);

    const bool root = geteuid() == 0;
    if (!ownFile && !root)
        QSKIP("needs another user's file, which only root can make");

    // A shared folder as /tmp is: everyone may add files, only owners remove or rename theirs.
    const QString directory = freshDirectory();
    QVERIFY(chmod(QFile::encodeName(directory).constData(), 01777) == 0);
    const QString journal = directory + u"/.journal"_s;
    QDir().mkpath(journal);
    QVERIFY(chmod(QFile::encodeName(journal).constData(), 0777) == 0);
    const QString path = directory + u"/photo.jpg"_s;
    QString made = makeFixture(path);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    made = setExtendedAttributes(path);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    // After the access control list, whose entries the mode's bits then follow.
    chmod(QFile::encodeName(path).constData(), readOnly ? 0444 : (ownFile ? 0640 : 0666));
    if (root && ownFile)
        QVERIFY(chown(QFile::encodeName(path).constData(), 65534, 65534) == 0);
    const timespec before = {1299215167, 123456789};
    setModificationTime(path, before);
    struct stat statusBefore;
    QVERIFY(stat(QFile::encodeName(path).constData(), &statusBefore) == 0);
    const ExtendedAttributes attributesBefore = extendedAttributes(path);
    const QByteArray bytesBefore = fileHash(path);

    // The build folder may be closed to other users: "nobody" gets a copy of the helper and of
    // the resources beside it.
    QString helper = QCoreApplication::applicationDirPath() + u"/write_file"_s;
    if (root) {
        const QString copy = m_root.filePath(u"helper"_s);
        if (!QFileInfo::exists(copy + u"/write_file"_s)) {
            QDir().mkpath(copy);
            QVERIFY(QFile::copy(helper, copy + u"/write_file"_s));
            QCOMPARE(
                run(u"cp"_s, {u"-r"_s, Resources::directory(), copy + u"/resources"_s}).exitCode,
                0);
            QCOMPARE(run(u"chmod"_s, {u"-R"_s, u"a+rX"_s, copy}).exitCode, 0);
        }
        helper = copy + u"/write_file"_s;
    }
    QStringList arguments = {u"--served"_s, journal, path, u"City"_s, u"Zürich"_s};
    const CommandResult result = root
        ? run(u"setpriv"_s,
              QStringList {u"--reuid=65534"_s, u"--regid=65534"_s, u"--clear-groups"_s, helper}
                  + arguments)
        : run(helper, arguments);

    QCOMPARE(QString::fromUtf8(result.standardOutput).trimmed(), message);
    QCOMPARE(result.exitCode, message.isEmpty() ? 0 : 1);
    struct stat statusAfter;
    QVERIFY(stat(QFile::encodeName(path).constData(), &statusAfter) == 0);
    QCOMPARE(statusAfter.st_uid, statusBefore.st_uid);
    QCOMPARE(statusAfter.st_mode, statusBefore.st_mode);
    QCOMPARE(extendedAttributes(path), attributesBefore);
    if (message.isEmpty()) {
        QCOMPARE(dumpValue(numericValues(path).value(u"IPTC:City"_s)), u"Zürich"_s);
        // Only the owner may set a file's time; others leave the time of the write.
        if (ownFile)
            QVERIFY(sameTime(statusAfter.st_mtim, before));
    } else {
        QCOMPARE(fileHash(path), bytesBefore);
    }
    QCOMPARE(entriesOf(directory), (QStringList {u".journal"_s, u"photo.jpg"_s}));
    QVERIFY(QDir(journal).isEmpty());
}

void tst_ExifWriteManager::parseExifToolError_data()
{
    QTest::addColumn<QString>("output");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");

    QTest::newRow("permission wins over locked")
        << u"Error: locked\nError: Permission denied"_s << 1 << u"Permission denied"_s;
    QTest::newRow("file not found") << u"Error: File not found"_s << 1 << u"File not found"_s;
    QTest::newRow("does not exist") << u"x does not exist"_s << 1 << u"File not found"_s;
    QTest::newRow("not found before read-only")
        << u"read-only; File not found"_s << 1 << u"File not found"_s;
    QTest::newRow("read-only") << u"Error: File is read-only"_s << 1 << u"File is read-only"_s;
    QTest::newRow("locked before in use") << u"in use and locked"_s << 1 << u"File is locked"_s;
    QTest::newRow("in use") << u"file in use"_s << 1 << u"File is in use"_s;
    QTest::newRow("no space") << u"Error: Error writing output file (No space left on device)"_s
                              << 1 << u"Disk is full"_s;
    QTest::newRow("disk full") << u"Disk full"_s << 1 << u"Disk is full"_s;
    QTest::newRow("matching is case-sensitive")
        << u"Error: Read-Only"_s << 1 << u"Error: Read-Only"_s;
    QTest::newRow("empty output") << QString() << 1 << u"Unknown error (exit code 1)"_s;
    QTest::newRow("two lines give the first")
        << u"Warning: odd thing\nError: bad thing\n"_s << 1 << u"Warning: odd thing"_s;
    QTest::newRow("a leading line break gives the first line with text")
        << u"\n  \nError: bad thing\nmore"_s << 1 << u"Error: bad thing"_s;
    QTest::newRow("line breaks alone") << u"\n\r\n"_s << 1 << u"Unknown error"_s;
}

void tst_ExifWriteManager::parseExifToolError()
{
    QFETCH(QString, output);
    QFETCH(int, status);
    QFETCH(QString, message);

    QCOMPARE(ExifWriteManager::parseExifToolError(output, status), message);
}

QTEST_GUILESS_MAIN(tst_ExifWriteManager)
#include "tst_ExifWriteManager.moc"
