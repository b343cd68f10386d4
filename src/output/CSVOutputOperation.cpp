#include "CSVOutputOperation.h"

#include "ItemOutputFormatter.h"
#include "map/MapAnnotationSink.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "platform/MainQueue.h"

namespace {

// The GPS keys and the city are those of the image reader's source, which is read now, on this
// thread, where it has not been read yet.
void readImageReaderSource(const Node &node)
{
    if (!MetadataStorage::shared().boolValueExistsAndIsTrue(
            node.absolutePath, QStringLiteral("retrieved"), MetadataSource::ImageIO))
        DataCoordinator::retrieveInformation(node, MetadataSource::ImageIO);
}

std::optional<QString> imageReaderText(const Node &node, const QString &key)
{
    const WrappedMetaDataValue value = MetadataStorage::shared().getWrappedValue(
        node.absolutePath, key, MetadataSource::ImageIO);
    if (value.kind() != WrappedMetaDataValue::Kind::StringValue)
        return std::nullopt;
    return value.stringValue();
}

} // namespace

CSVOutputOperation::CSVOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                                       std::shared_ptr<OutputEngine> outputEngine,
                                       FlatFileListPtr flatFileList)
    : OutputFormatOperation(dataModelSnapshot, std::move(outputEngine), std::move(flatFileList),
                            std::make_unique<ItemOutputFormatter>(dataModelSnapshot))
{ }

std::optional<double> CSVOutputOperation::leadingDecimal(const QString &text)
{
    qsizetype i = 0;
    const qsizetype size = text.size();
    while (i < size && text[i].isSpace())
        ++i;
    const qsizetype start = i;
    if (i < size && (text[i] == u'+' || text[i] == u'-'))
        ++i;
    const auto isDigit = [&](qsizetype at) {
        return at < size && text[at] >= u'0' && text[at] <= u'9';
    };
    qsizetype digits = 0;
    while (isDigit(i)) {
        ++i;
        ++digits;
    }
    if (i < size && text[i] == u'.') {
        ++i;
        while (isDigit(i)) {
            ++i;
            ++digits;
        }
    }
    if (digits == 0)
        return std::nullopt;
    // An exponent counts only when digits follow it; otherwise the number ends before the "e".
    if (i < size && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype e = i + 1;
        if (e < size && (text[e] == u'+' || text[e] == u'-'))
            ++e;
        if (isDigit(e)) {
            while (isDigit(e))
                ++e;
            i = e;
        }
    }
    bool ok = false;
    const double value = text.mid(start, i - start).toDouble(&ok);
    if (!ok)
        return std::nullopt;
    return value;
}

void CSVOutputOperation::main()
{
    if (isCancelled())
        return;
    // The markers of this pass replace those of the pass before; the main queue keeps the order.
    MainQueue::post([] {
        if (MapAnnotationSink *map = MapAnnotationSink::installed())
            map->removeAllPointAnnotations();
    });
    for (const NodePtr &node : flatFileList->files) {
        if (isCancelled())
            return;
        fileDone();
        readImageReaderSource(*node);
        const std::optional<QString> longitude
            = imageReaderText(*node, QStringLiteral("gps_longitude"));
        const std::optional<QString> longitudeRef
            = imageReaderText(*node, QStringLiteral("gps_longitude_ref"));
        const std::optional<QString> latitude
            = imageReaderText(*node, QStringLiteral("gps_latitude"));
        const std::optional<QString> latitudeRef
            = imageReaderText(*node, QStringLiteral("gps_latitude_ref"));
        if (!longitude || !longitudeRef || !latitude || !latitudeRef)
            continue;
        // Exactly these letters, in upper case.
        if ((*latitudeRef != u"N" && *latitudeRef != u"S")
            || (*longitudeRef != u"E" && *longitudeRef != u"W"))
            continue;
        std::optional<double> longitudeValue = leadingDecimal(*longitude);
        std::optional<double> latitudeValue = leadingDecimal(*latitude);
        if (!longitudeValue || !latitudeValue)
            continue;
        if (*longitudeRef == u"W")
            *longitudeValue = -*longitudeValue;
        if (*latitudeRef == u"S")
            *latitudeValue = -*latitudeValue;

        PointAnnotation annotation;
        annotation.latitude = *latitudeValue;
        annotation.longitude = *longitudeValue;
        annotation.subtitle = node->smartName;
        annotation.title = imageReaderText(*node, QStringLiteral("iptc_city"));
        MainQueue::post([annotation] {
            if (MapAnnotationSink *map = MapAnnotationSink::installed())
                map->addPointAnnotation(annotation);
        });
    }
    finish();
}
