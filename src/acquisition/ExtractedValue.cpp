#include "ExtractedValue.h"

#if __has_include("metadata/MetadataStorage.h")
#include "metadata/MetadataStorage.h"

void storeExtractedValues(const QString &path, MetadataSource source, const ExtractedValues &values)
{
    MetadataStorage &storage = MetadataStorage::shared();
    for (const ExtractedValue &value : values) {
        switch (value.value.kind()) {
        case WrappedMetaDataValue::Kind::StringValue:
            storage.store(path, source, value.key, value.value.stringValue());
            break;
        case WrappedMetaDataValue::Kind::DateValue:
            storage.store(path, source, value.key, value.value.dateValue());
            break;
        case WrappedMetaDataValue::Kind::BoolValue:
            storage.store(path, source, value.key, value.value.boolValue());
            break;
        case WrappedMetaDataValue::Kind::NSInteger:
            storage.store(path, source, value.key, value.value.integerValue());
            break;
        case WrappedMetaDataValue::Kind::None:
            break;
        }
    }
}
#endif
