#include "AVKitHelper.h"

#include "ValueText.h"
#include "commons/Log.h"

#include <QFile>
#include <QFileInfo>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

#include <taglib/aifffile.h>
#include <taglib/commentsframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tdebuglistener.h>
#include <taglib/textidentificationframe.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/urllinkframe.h>
#include <taglib/wavfile.h>

#include <mutex>

namespace {

class QuietTagLibListener : public TagLib::DebugListener
{
public:
    void printMessage(const TagLib::String &) override { }
};

void initialiseLibrariesOnce()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // Both libraries comment on damaged files on stderr; a reader stays quiet.
        av_log_set_level(AV_LOG_QUIET);
        static QuietTagLibListener quiet;
        TagLib::setDebugListener(&quiet);
    });
}

// FFmpeg's tag names (lower case, language suffix and QuickTime's reverse-DNS prefix removed)
// to the common keys.
const QHash<QString, QString> &commonKeyOfTag()
{
    static const QHash<QString, QString> map = {
        {u"title"_qs, u"title"_qs},
        {u"artist"_qs, u"artist"_qs},
        {u"album"_qs, u"albumName"_qs},
        {u"author"_qs, u"author"_qs},
        {u"composer"_qs, u"creator"_qs},
        {u"description"_qs, u"description"_qs},
        {u"comment"_qs, u"description"_qs},
        {u"copyright"_qs, u"copyrights"_qs},
        {u"date"_qs, u"creationDate"_qs},
        {u"creationdate"_qs, u"creationDate"_qs},
        {u"genre"_qs, u"type"_qs},
        {u"publisher"_qs, u"publisher"_qs},
        {u"language"_qs, u"language"_qs},
        {u"location"_qs, u"location"_qs},
        {u"location.iso6709"_qs, u"location"_qs},
        {u"make"_qs, u"make"_qs},
        {u"model"_qs, u"model"_qs},
        {u"encoder"_qs, u"software"_qs},
        {u"software"_qs, u"software"_qs},
    };
    return map;
}

QString normalisedTagName(const char *name)
{
    QString tag = QString::fromUtf8(name).toLower();
    static const QString quickTimePrefix = u"com.apple.quicktime."_qs;
    if (tag.startsWith(quickTimePrefix))
        tag = tag.mid(quickTimePrefix.size());
    // "location-eng" and "location" carry the same value.
    const qsizetype dash = tag.lastIndexOf(QLatin1Char('-'));
    if (dash > 0 && tag.size() - dash == 4)
        tag.truncate(dash);
    return tag;
}

struct FileInput
{
    QFile file;
};

int readPacket(void *opaque, uint8_t *buffer, int size)
{
    auto *input = static_cast<FileInput *>(opaque);
    const qint64 count = input->file.read(reinterpret_cast<char *>(buffer), size);
    return count > 0 ? int(count) : AVERROR_EOF;
}

int64_t seekInput(void *opaque, int64_t offset, int whence)
{
    auto *input = static_cast<FileInput *>(opaque);
    if (whence & AVSEEK_SIZE)
        return input->file.size();
    whence &= ~AVSEEK_FORCE;
    qint64 target = offset;
    if (whence == SEEK_CUR)
        target += input->file.pos();
    else if (whence == SEEK_END)
        target += input->file.size();
    else if (whence != SEEK_SET)
        return -1;
    if (target < 0 || !input->file.seek(target))
        return -1;
    return target;
}

// Reads the container's header through our own file reader: no URL or protocol parsing on the
// path, and nothing beyond the header is decoded.
void readCommonMetadata(const QString &path, AVKitHelper::Asset &asset)
{
    FileInput input;
    input.file.setFileName(path);
    if (!input.file.open(QIODevice::ReadOnly) || input.file.size() == 0)
        return;

    constexpr int bufferSize = 32768;
    auto *buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    AVIOContext *io
        = avio_alloc_context(buffer, bufferSize, 0, &input, readPacket, nullptr, seekInput);
    if (!io) {
        av_free(buffer);
        return;
    }
    AVFormatContext *context = avformat_alloc_context();
    if (!context) {
        av_freep(&io->buffer);
        avio_context_free(&io);
        return;
    }
    context->pb = io;
    const QByteArray name = QFile::encodeName(path);
    if (avformat_open_input(&context, name.constData(), nullptr, nullptr) == 0) {
        QHash<QString, bool> seen;
        std::optional<QDateTime> containerCreationTime;
        const AVDictionaryEntry *entry = nullptr;
        while ((entry = av_dict_get(context->metadata, "", entry, AV_DICT_IGNORE_SUFFIX))) {
            const QString tag = normalisedTagName(entry->key);
            const QString value = QString::fromUtf8(entry->value);
            if (tag.startsWith(u"lyrics"_qs)) {
                if (!asset.lyrics)
                    asset.lyrics = value;
                continue;
            }
            if (tag == u"creation_time"_qs) {
                const QDateTime date = QDateTime::fromString(value, Qt::ISODateWithMs);
                if (date.isValid())
                    containerCreationTime = date;
                continue;
            }
            const QString commonKey = commonKeyOfTag().value(tag);
            if (commonKey.isEmpty() || seen.contains(commonKey))
                continue;
            seen.insert(commonKey, true);
            asset.commonMetadata.append({commonKey, tag, value, std::nullopt, std::nullopt});
        }
        // The container's own creation time is a date, not text; it stands in only when no
        // tag names a creation date.
        if (containerCreationTime && !seen.contains(u"creationDate"_qs)) {
            asset.commonMetadata.append({u"creationDate"_qs, u"creation_time"_qs, std::nullopt,
                                         containerCreationTime, std::nullopt});
        }
        avformat_close_input(&context);
    } else {
        // avformat_open_input frees the context on failure.
        context = nullptr;
    }
    av_freep(&io->buffer);
    avio_context_free(&io);
}

std::optional<QString> frameText(const TagLib::ID3v2::Frame *frame)
{
    auto text = [](const TagLib::String &s) {
        return QString::fromStdWString(s.toWString());
    };
    if (const auto *user
        = dynamic_cast<const TagLib::ID3v2::UserTextIdentificationFrame *>(frame)) {
        const TagLib::StringList fields = user->fieldList();
        QStringList values;
        for (auto it = fields.begin(); it != fields.end(); ++it) {
            if (it != fields.begin())
                values << text(*it);
        }
        return ValueText::asCommaSeparatedString(values);
    }
    if (const auto *textFrame = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame *>(frame))
        return text(textFrame->toString());
    if (const auto *comment = dynamic_cast<const TagLib::ID3v2::CommentsFrame *>(frame))
        return text(comment->text());
    if (const auto *lyrics = dynamic_cast<const TagLib::ID3v2::UnsynchronizedLyricsFrame *>(frame))
        return text(lyrics->text());
    if (const auto *url = dynamic_cast<const TagLib::ID3v2::UrlLinkFrame *>(frame))
        return text(url->url());
    return std::nullopt;
}

void appendFrames(const TagLib::ID3v2::Tag *tag, AVKitHelper::Asset &asset)
{
    if (!tag)
        return;
    for (const TagLib::ID3v2::Frame *frame : tag->frameList()) {
        const TagLib::ByteVector id = frame->frameID();
        const QString key = QString::fromLatin1(id.data(), int(id.size()));
        asset.id3Metadata.append({QString(), key, frameText(frame), std::nullopt, std::nullopt});
    }
}

void readId3Metadata(const QString &path, AVKitHelper::Asset &asset)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    const QByteArray name = QFile::encodeName(path);
    if (extension == u"mp3"_qs) {
        TagLib::MPEG::File file(name.constData(), false);
        if (file.isValid() && file.hasID3v2Tag())
            appendFrames(file.ID3v2Tag(), asset);
    } else if (extension == u"wav"_qs || extension == u"wave"_qs || extension == u"bwf"_qs) {
        TagLib::RIFF::WAV::File file(name.constData(), false);
        if (file.isValid() && file.hasID3v2Tag())
            appendFrames(file.ID3v2Tag(), asset);
    } else if (extension == u"aif"_qs || extension == u"aiff"_qs || extension == u"aifc"_qs) {
        TagLib::RIFF::AIFF::File file(name.constData(), false);
        if (file.isValid() && file.hasID3v2Tag())
            appendFrames(file.tag(), asset);
    }
}

} // namespace

const AVKitHelper &AVKitHelper::shared()
{
    static const AVKitHelper instance;
    return instance;
}

AVKitHelper::AVKitHelper()
    : supportedFileExtensions(
        {u"mov"_qs,  u"qt"_qs,   u"mp4"_qs,  u"m4v"_qs,  u"m4a"_qs, u"3gp"_qs,  u"3gpp"_qs,
         u"sdv"_qs,  u"3g2"_qs,  u"3gp2"_qs, u"caf"_qs,  u"wav"_qs, u"wave"_qs, u"bwf"_qs,
         u"aif"_qs,  u"aiff"_qs, u"aifc"_qs, u"cdda"_qs, u"amr"_qs, u"mp3"_qs,  u"au"_qs,
         u"snd"_qs,  u"ac3"_qs,  u"eac3"_qs, u"jpg"_qs,  u"dng"_qs, u"heic"_qs, u"avci"_qs,
         u"heif"_qs, u"tiff"_qs, u"tif"_qs})
    , stringValueKeys({
          // Common keys.
          {u"artist"_qs, u"av_artist"_qs},
          {u"make"_qs, u"av_make"_qs},
          {u"type"_qs, u"av_type"_qs},
          {u"model"_qs, u"av_model"_qs},
          {u"title"_qs, u"av_title"_qs},
          {u"format"_qs, u"av_format"_qs},
          {u"source"_qs, u"av_source"_qs},
          {u"creator"_qs, u"av_creator"_qs},
          {u"subject"_qs, u"av_subject"_qs},
          {u"language"_qs, u"av_language"_qs},
          {u"description"_qs, u"av_description"_qs},
          {u"publisher"_qs, u"av_publisher"_qs},
          {u"contributor"_qs, u"av_contributor"_qs},
          {u"creationDate"_qs, u"av_creation_date"_qs},
          {u"lastModifiedDate"_qs, u"av_modified_date"_qs},
          {u"identifier"_qs, u"av_identifier"_qs},
          {u"relation"_qs, u"av_relation"_qs},
          {u"location"_qs, u"av_location"_qs},
          {u"copyrights"_qs, u"av_copyrights"_qs},
          {u"albumName"_qs, u"av_album"_qs},
          {u"author"_qs, u"av_author"_qs},
          {u"software"_qs, u"av_software"_qs},
          // ID3 frame identifiers.
          {u"COMM"_qs, u"id3_comments"_qs},
          {u"COMR"_qs, u"id3_commercial"_qs},
          {u"ENCR"_qs, u"id3_encryption"_qs},
          {u"EQU2"_qs, u"id3_equalization2"_qs},
          {u"GRID"_qs, u"id3_group_identifier"_qs},
          {u"LINK"_qs, u"id3_link"_qs},
          {u"OWNE"_qs, u"id3_ownership"_qs},
          {u"PRIV"_qs, u"id3_private"_qs},
          {u"POSS"_qs, u"id3_position_synchronization"_qs},
          {u"RVA2"_qs, u"id3_relative_volume_adjustment2"_qs},
          {u"RVRB"_qs, u"id3_reverb"_qs},
          {u"SIGN"_qs, u"id3_signature"_qs},
          {u"TALB"_qs, u"id3_album_title"_qs},
          {u"TBPM"_qs, u"id3_bpm"_qs},
          {u"TCOM"_qs, u"id3_composer"_qs},
          {u"TCOP"_qs, u"id3_copyright"_qs},
          {u"TDAT"_qs, u"id3_date"_qs},
          {u"TDEN"_qs, u"id3_encoding_time"_qs},
          {u"TDOR"_qs, u"id3_original_release_date"_qs},
          {u"TDRC"_qs, u"id3_recording_time"_qs},
          {u"TDRL"_qs, u"id3_release_time"_qs},
          {u"TDTG"_qs, u"id3_tagging_time"_qs},
          {u"TENC"_qs, u"id3_encoded_by"_qs},
          {u"TEXT"_qs, u"id3_lyricist"_qs},
          {u"TFLT"_qs, u"id3_file_type"_qs},
          {u"TIME"_qs, u"id3_time"_qs},
          {u"TIT3"_qs, u"id3_sub_title"_qs},
          {u"TKEY"_qs, u"id3_initial_key"_qs},
          {u"TLAN"_qs, u"id3_language"_qs},
          {u"TMCL"_qs, u"id3_musician_credits_list"_qs},
          {u"TMED"_qs, u"id3_media_type"_qs},
          {u"TMOO"_qs, u"id3_mood"_qs},
          {u"TOWN"_qs, u"id3_file_owner"_qs},
          {u"TPE2"_qs, u"id3_band"_qs},
          {u"TPE3"_qs, u"id3_conductor"_qs},
          {u"TPE4"_qs, u"id3_modified_by"_qs},
          {u"TPRO"_qs, u"id3_produced_notice"_qs},
          {u"TPUB"_qs, u"id3_publisher"_qs},
          {u"TRSN"_qs, u"id3_radio_station_name"_qs},
          {u"TRSO"_qs, u"id3_radio_station_owner"_qs},
          {u"TSIZ"_qs, u"id3_size"_qs},
          {u"TSOA"_qs, u"id3_album_sort_order"_qs},
          {u"TSOP"_qs, u"id3_performer_sort_order"_qs},
          {u"TSOT"_qs, u"id3_title_sort_order"_qs},
          {u"TSST"_qs, u"id3_set_subtitle"_qs},
          {u"TYER"_qs, u"id3_year"_qs},
          {u"TXXX"_qs, u"id3_user_text"_qs},
          {u"USER"_qs, u"id3_terms_of_use"_qs},
          {u"WORS"_qs, u"id3_internet_radio_station_homepage"_qs},
          {u"WPAY"_qs, u"id3_payment"_qs},
      })
{
    initialiseLibrariesOnce();
}

AVKitHelper::Asset AVKitHelper::assetWithPath(const QString &path)
{
    initialiseLibrariesOnce();
    Asset asset;
    if (!QFileInfo(path).isFile())
        return asset;
    readCommonMetadata(path, asset);
    readId3Metadata(path, asset);
    return asset;
}

#if __has_include("metadata/MetadataStorage.h")
void AVKitHelper::retrieveAndStoreAllTagsFor(const QString &path) const
{
    storeExtractedValues(path, MetadataSource::AVKit, extract(path));
}
#endif

ExtractedValues AVKitHelper::extract(const QString &path) const
{
    if (!supportedFileExtensions.contains(QFileInfo(path).suffix().toLower()))
        return {};
    return valuesFromAsset(assetWithPath(path));
}

ExtractedValues AVKitHelper::valuesFromAsset(const Asset &asset) const
{
    ExtractedValues values;
    for (const MetadataItem &item : asset.commonMetadata) {
        if (item.commonKey.isEmpty())
            continue;
        const auto tag = stringValueKeys.constFind(item.commonKey);
        if (tag == stringValueKeys.cend())
            continue;
        // The marked forms are what readers of these keys have always received.
        if (item.stringValue) {
            values.append({*tag, WrappedMetaDataValue::string(*item.stringValue)});
        } else if (item.dateValue) {
            values.append({*tag,
                           WrappedMetaDataValue::string(
                               u"date value!"_qs + ValueText::dateDescription(*item.dateValue))});
        } else if (item.numberValue) {
            values.append(
                {*tag,
                 WrappedMetaDataValue::string(u"date number!"_qs
                                              + ValueText::numberDescription(*item.numberValue))});
        }
    }
    for (const MetadataItem &item : asset.id3Metadata) {
        if (item.key.isEmpty())
            continue;
        const QString key = id3LookupKey(item.key);
        const auto tag = stringValueKeys.constFind(key);
        if (tag != stringValueKeys.cend()) {
            if (item.stringValue)
                values.append({*tag, WrappedMetaDataValue::string(*item.stringValue)});
        } else if (item.stringValue) {
            Log::line(u"key not recognized: "_qs + key + u", value "_qs + *item.stringValue);
        }
    }
    if (asset.lyrics)
        values.append({u"av_lyrics"_qs, WrappedMetaDataValue::string(*asset.lyrics)});
    return values;
}

QString AVKitHelper::id3LookupKey(const QString &key)
{
    if (key.endsWith(QChar(0)))
        return key.left(3);
    return key;
}
