#pragma once

#include <QString>

#include <memory>

// Records of the writes under way, one small file each in the application's data folder, so
// that a write cut off by the end of the program is cleaned up at the next start: its temporary
// file goes, and a file that was being rewritten in place gets its recovery copy back. A record
// is locked while its write runs, so that a second running instance leaves it alone.
class WriteJournal
{
public:
    class Record
    {
    public:
        ~Record(); // the write is over: the record goes
        Record(const Record &) = delete;
        Record &operator=(const Record &) = delete;

        // The recovery copy of the target is being made; it counts only once marked complete.
        bool noteRecoveryCopy(const QString &recoveryPath);
        // The copy is complete and on disk; from now on a cut-off write is undone with it.
        bool markRecoveryCopyComplete();
        // The write could not be finished nor undone: the record stays for the next start.
        void keepForNextStart() { m_kept = true; }

    private:
        friend class WriteJournal;
        Record(int fd, QString file, QString target, QString temporary);
        bool store(bool durable);

        const int m_fd;
        const QString m_file;
        const QString m_target;
        const QString m_temporary;
        QString m_recovery;
        bool m_recoveryComplete = false;
        bool m_kept = false;
    };

    // The folder of the records; the application's data folder unless set for tests.
    static QString directory();
    static void setDirectory(const QString &directory);

    // Starts a record for writing target through temporary; absent (with errorText) when the
    // record can't be kept.
    static std::unique_ptr<Record> begin(const QString &target, const QString &temporary,
                                         QString *errorText);

    // At start: finishes every record whose write was cut off. Returns how many files got
    // their recovery copy back.
    static int recoverUnfinishedWrites();

    // Copies the bytes of source over target in place, keeping target's inode and with it its
    // links, owner, mode and extended attributes; then sets target's modification time to
    // source's. Flushed to disk before it returns true; errorText says why not.
    static bool copyInPlace(const QString &source, const QString &target, QString *errorText);
};
