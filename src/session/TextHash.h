#pragma once

#include <QStringView>

#include <functional>
#include <string_view>

// The standard library's hash of a text's UTF-16 code units, for maps that only tell texts
// apart: it costs a fraction of qHash's seeded one, which matters once per file of a scan.
struct TextHash
{
    size_t operator()(QStringView text) const noexcept
    {
        return std::hash<std::u16string_view>()(
            std::u16string_view(text.utf16(), size_t(text.size())));
    }
};
