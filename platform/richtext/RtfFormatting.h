#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>

#include "platform/richtext/RtfState.h"
#include "platform/richtext/RtfTokenizer.h"
#include "platform/richtext/RtfWords.h"

namespace vandrel {

/// Appends a control word as it is written: backslash, name, number.
void appendRtfWord(QByteArray &to, const RtfToken &word);

/// Sequences of control words that are kept for writing, each stored once and known by its index. Index 0 is the
/// empty sequence.
class RtfKeptWords
{
public:
    RtfKeptWords() { m_sequences.append(QByteArray()); }

    /// The sequence `index` with `word` behind it. One that has grown too long stays as it is.
    int append(int index, const RtfToken &word);
    /// As append(), but an earlier `word` of the same name is taken out.
    int replace(int index, const RtfToken &word);
    QByteArray at(int index) const { return m_sequences.value(index); }

private:
    int indexOf(const QByteArray &sequence, int otherwise);

    QList<QByteArray> m_sequences;
    QHash<QByteArray, int> m_indices;
};

/// Applies a word of kind Character, \cs aside, which needs the style sheet.
void applyCharacterWord(RtfCharState &state, RtfWord word, const RtfToken &token, RtfKeptWords &kept);
/// Applies a word of kind Paragraph, \s aside.
void applyParagraphWord(RtfParaState &state, RtfWord word, const RtfToken &token, RtfKeptWords &kept);

/// Reads the control words that belong to borders; true when the token was one of them and is to be kept with the
/// border's owner.
bool isBorderDetail(const RtfToken &token);

/// The largest length that the format knows, in twips: 22 inches.
inline constexpr int rtfLongestTwips = 31680;

/// Twips cut to ±22 inches.
int clampTwips(int twips);

} // namespace vandrel
