#pragma once

#include <QList>
#include <QString>

namespace valtrona {

/// What kind of text a control property holds for the language switch.
enum class LngPropertyType {
    None = 0,     ///< not a language text
    Caption = 1,  ///< a one-line caption
    Text = 2,     ///< a free, possibly multi-line text
    ToolTip = 3,  ///< a tooltip
};

/// One language text of a control: the property that holds it and its text.
struct LanguageCaption
{
    QString property;
    QString text;

    bool operator==(const LanguageCaption &other) const = default;
};

using LanguageCaptions = QList<LanguageCaption>;

} // namespace valtrona
