#include "controls/lineinput_edit.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QTextCursor>

#include "controls/controlproperties.h"

namespace valtrona {

namespace {

bool isDecimalSeparator(QChar c)
{
    return c == QLatin1Char(',') || c == QLatin1Char('.');
}

bool isLineBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QChar::ParagraphSeparator
        || c == QChar::LineSeparator;
}

} // namespace

LineInputRules::TextBoxStyle LineInputRules::kind() const
{
    return enumFromCode(textBoxStyle, TextBoxStyle::AnyText);
}

QString LineInputRules::clean(const QString &text, bool multiLine) const
{
    const bool anyChar = mask.isEmpty() || mask == QLatin1String("*");
    const TextBoxStyle style = kind();
    // Whole-string case mapping, so "ß" becomes "SS".
    QString source = text;
    if (style == TextBoxStyle::UpperCase)
        source = text.toUpper();
    else if (style == TextBoxStyle::LowerCase)
        source = text.toLower();
    QString result;
    result.reserve(source.size());
    bool separatorSeen = false;
    for (const QChar c : source) {
        if (isLineBreak(c)) {
            if (multiLine) {
                result.append(c);
                separatorSeen = false;
            }
            continue;
        }
        if (!anyChar && !mask.contains(c))
            continue;
        const bool lineStart = result.isEmpty() || isLineBreak(result.back());
        switch (style) {
        case TextBoxStyle::Digits:
            if (!c.isDigit())
                continue;
            break;
        case TextBoxStyle::WholeNumber:
            if (!c.isDigit() && !(c == QLatin1Char('-') && lineStart))
                continue;
            break;
        case TextBoxStyle::Number:
            if (isDecimalSeparator(c)) {
                if (separatorSeen)
                    continue;
                separatorSeen = true;
            } else if (!c.isDigit() && !(c == QLatin1Char('-') && lineStart)) {
                continue;
            }
            break;
        case TextBoxStyle::AnyText:
        case TextBoxStyle::UpperCase:
        case TextBoxStyle::LowerCase:
            break;
        }
        result.append(c);
    }
    return result;
}

LineInputValidator::LineInputValidator(QLineEdit *edit)
    : QValidator(edit)
    , m_previous(edit->text())
{
    connect(edit, &QLineEdit::textChanged, this, [this](const QString &text) { m_previous = text; });
}

void LineInputValidator::setRules(const LineInputRules &rules)
{
    m_rules = rules;
    Q_EMIT changed();
}

const LineInputRules &LineInputValidator::rules() const
{
    return m_rules;
}

void LineInputValidator::setPassThrough(bool on)
{
    m_passThrough = on;
}

QValidator::State LineInputValidator::validate(QString &input, int &pos) const
{
    if (m_passThrough)
        return Acceptable;
    // The edit replaced the middle of the previous text: find that middle.
    const QString &old = m_previous;
    qsizetype prefix = 0;
    const qsizetype shorter = qMin(old.size(), input.size());
    while (prefix < shorter && old.at(prefix) == input.at(prefix))
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix && old.at(old.size() - 1 - suffix) == input.at(input.size() - 1 - suffix))
        ++suffix;
    const QString head = input.left(prefix);
    const QString tail = input.right(suffix);
    const QString inserted = input.mid(prefix, input.size() - prefix - suffix);

    const QString cleanHead = m_rules.clean(head);
    QString added = m_rules.clean(head + inserted).mid(cleanHead.size());
    if (m_rules.kind() == LineInputRules::TextBoxStyle::Number) {
        const auto hasSeparator = [](const QString &text) {
            return text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('.'));
        };
        if (hasSeparator(tail) || hasSeparator(cleanHead)) {
            added.remove(QLatin1Char(','));
            added.remove(QLatin1Char('.'));
        }
    }
    if (m_rules.maxLength > 0) {
        const qsizetype room = qMax<qsizetype>(0, m_rules.maxLength - head.size() - tail.size());
        added.truncate(room);
    }
    const QString result = head + added + tail;
    if (result == old && input != old && !inserted.isEmpty())
        return Invalid; // nothing of the insertion was allowed: leave the text as it was
    pos = static_cast<int>(head.size() + added.size());
    input = result;
    return Acceptable;
}

LineInputMemo::LineInputMemo(QWidget *parent)
    : QPlainTextEdit(parent)
{
}

void LineInputMemo::setRules(const LineInputRules &rules)
{
    m_rules = rules;
}

void LineInputMemo::keyPressEvent(QKeyEvent *event)
{
    const QString typed = event->text();
    const bool printable = !typed.isEmpty() && (typed.at(0).isPrint() || isLineBreak(typed.at(0)))
        && !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (!printable) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    insertFiltered(typed);
    event->accept();
}

void LineInputMemo::insertFromMimeData(const QMimeData *source)
{
    if (source && source->hasText())
        insertFiltered(source->text());
}

void LineInputMemo::insertFiltered(const QString &text)
{
    if (isReadOnly())
        return;
    QString cleaned = m_rules.clean(QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n")), true);
    if (m_rules.maxLength > 0) {
        QTextCursor cursor = textCursor();
        const qsizetype kept = toPlainText().size() - (cursor.selectionEnd() - cursor.selectionStart());
        const qsizetype room = qMax<qsizetype>(0, m_rules.maxLength - kept);
        cleaned.truncate(room);
    }
    if (cleaned.isEmpty())
        return;
    insertPlainText(cleaned);
}

} // namespace valtrona
