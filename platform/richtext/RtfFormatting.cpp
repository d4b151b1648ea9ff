#include "platform/richtext/RtfFormatting.h"

#include <algorithm>
#include <utility>

#include "platform/richtext/RtfLists.h"

namespace vandrel {

namespace {

constexpr qsizetype longestSequence = 512;
constexpr qsizetype mostSequences = 65'536;
constexpr qsizetype mostTabs = 64;
/// 2160 points.
constexpr int largestHalfPoints = 4320;

bool isOn(const RtfToken &token)
{
    return !token.hasNumber || token.number != 0;
}

int numberOr(const RtfToken &token, int otherwise)
{
    return token.hasNumber ? token.number : otherwise;
}

/// Removes "\name" and its number from a sequence.
QByteArray without(const QByteArray &sequence, QByteArrayView name)
{
    QByteArray result;
    RtfTokenizer words(sequence);
    for (RtfToken word = words.next(); word.type != RtfToken::Type::End; word = words.next()) {
        if (word.text != name)
            appendRtfWord(result, word);
    }
    return result;
}

void setRaised(RtfCharState &state, RtfCharState::Flag flag, RtfCharState::Flag other, bool on)
{
    state.set(flag, on);
    if (on)
        state.set(other, false);
}

/// A paragraph repeats the tabs of its style; two at one place are one.
void addTab(RtfParaState &state, int position)
{
    RtfTab tab = std::exchange(state.nextTab, RtfTab());
    tab.position = clampTwips(position);
    const auto known = std::find_if(state.tabs.begin(), state.tabs.end(),
                                    [&tab](const RtfTab &other) { return other.position == tab.position; });
    if (known != state.tabs.end())
        *known = tab;
    else if (state.tabs.size() < mostTabs)
        state.tabs.append(tab);
}

bool applyAlignment(RtfParaState &state, RtfWord word)
{
    switch (word) {
    case RtfWord::Ql:
        state.alignment = RtfParaState::AlignLeft;
        return true;
    case RtfWord::Qr:
        state.alignment = RtfParaState::AlignRight;
        return true;
    case RtfWord::Qc:
        state.alignment = RtfParaState::AlignCentre;
        return true;
    case RtfWord::Qj:
    case RtfWord::Qd:
        state.alignment = RtfParaState::AlignJustify;
        return true;
    default:
        return false;
    }
}

bool applyLength(RtfParaState &state, RtfWord word, const RtfToken &token)
{
    const int twips = clampTwips(token.number);
    switch (word) {
    case RtfWord::Li:
        state.left = twips;
        return true;
    case RtfWord::Ri:
        state.right = twips;
        return true;
    case RtfWord::Fi:
        state.first = twips;
        return true;
    case RtfWord::Sb:
        state.before = std::max(twips, 0);
        return true;
    case RtfWord::Sa:
        state.after = std::max(twips, 0);
        return true;
    case RtfWord::Sl:
        state.lineSpacing = twips;
        return true;
    case RtfWord::Slmult:
        state.lineSpacingMultiple = token.number != 0;
        return true;
    default:
        return false;
    }
}

bool applyTabLeader(RtfParaState &state, RtfWord word)
{
    switch (word) {
    case RtfWord::Tldot:
        state.nextTab.leader = RtfTab::Dots;
        return true;
    case RtfWord::Tlmdot:
        state.nextTab.leader = RtfTab::MiddleDots;
        return true;
    case RtfWord::Tlhyph:
        state.nextTab.leader = RtfTab::Hyphens;
        return true;
    case RtfWord::Tlul:
        state.nextTab.leader = RtfTab::Underline;
        return true;
    case RtfWord::Tlth:
        state.nextTab.leader = RtfTab::ThickLine;
        return true;
    case RtfWord::Tleq:
        state.nextTab.leader = RtfTab::EqualSigns;
        return true;
    default:
        return false;
    }
}

bool applyTab(RtfParaState &state, RtfWord word, const RtfToken &token)
{
    switch (word) {
    case RtfWord::Tx:
        addTab(state, token.number);
        return true;
    case RtfWord::Tb:
        state.nextTab = RtfTab();
        return true;
    case RtfWord::Tqr:
        state.nextTab.type = RtfTab::Right;
        return true;
    case RtfWord::Tqc:
        state.nextTab.type = RtfTab::Centre;
        return true;
    case RtfWord::Tqdec:
        state.nextTab.type = RtfTab::Decimal;
        return true;
    default:
        return applyTabLeader(state, word);
    }
}

bool applyParagraphFlag(RtfParaState &state, RtfWord word, const RtfToken &token)
{
    switch (word) {
    case RtfWord::Keep:
        state.keepLines = isOn(token);
        return true;
    case RtfWord::Keepn:
        state.keepNext = isOn(token);
        return true;
    case RtfWord::Pagebb:
        state.pageBreakBefore = isOn(token);
        return true;
    case RtfWord::Rtlpar:
        state.rightToLeft = 1;
        return true;
    case RtfWord::Ltrpar:
        state.rightToLeft = 0;
        return true;
    default:
        return false;
    }
}

bool applyPlace(RtfParaState &state, RtfWord word, const RtfToken &token)
{
    switch (word) {
    case RtfWord::Pard:
        state.reset();
        return true;
    case RtfWord::Ls:
        state.list = token.number == 0 ? rtflist::Zero : std::max(token.number, 0);
        return true;
    case RtfWord::Ilvl:
        state.level = std::clamp(token.number, 0, 8);
        return true;
    case RtfWord::Intbl:
        state.inTable = isOn(token);
        return true;
    case RtfWord::Itap:
        state.tableDepth = std::max(token.number, 0);
        return true;
    case RtfWord::Cbpat:
        state.shading = token.number;
        return true;
    default:
        return false;
    }
}

bool applyUnderline(RtfCharState &state, RtfWord word, const RtfToken &token)
{
    if (word == RtfWord::Ulnone) {
        state.set(RtfCharState::Underline, false);
        return true;
    }
    if (!token.text.startsWith("ul"))
        return false;
    state.set(RtfCharState::Underline, isOn(token));
    return true;
}

bool applyFlag(RtfCharState &state, RtfWord word, bool on)
{
    switch (word) {
    case RtfWord::B:
        state.set(RtfCharState::Bold, on);
        return true;
    case RtfWord::I:
        state.set(RtfCharState::Italic, on);
        return true;
    case RtfWord::Strike:
        state.set(RtfCharState::Strike, on);
        return true;
    case RtfWord::Striked:
        state.set(RtfCharState::DoubleStrike, on);
        return true;
    case RtfWord::Super:
        setRaised(state, RtfCharState::Super, RtfCharState::Sub, on);
        return true;
    case RtfWord::Sub:
        setRaised(state, RtfCharState::Sub, RtfCharState::Super, on);
        return true;
    case RtfWord::Caps:
        state.set(RtfCharState::Caps, on);
        return true;
    case RtfWord::Scaps:
        state.set(RtfCharState::SmallCaps, on);
        return true;
    case RtfWord::V:
        state.set(RtfCharState::Hidden, on);
        return true;
    case RtfWord::Deleted:
        state.set(RtfCharState::Deleted, on);
        return true;
    default:
        return false;
    }
}

bool applyNumber(RtfCharState &state, RtfWord word, const RtfToken &token)
{
    switch (word) {
    case RtfWord::F:
        state.font = std::max(token.number, -1);
        return true;
    case RtfWord::Fs:
        state.halfPoints
            = token.number > 0 ? std::min(token.number, largestHalfPoints) : RtfCharState().halfPoints;
        return true;
    case RtfWord::Cf:
        state.colour = token.number;
        return true;
    case RtfWord::Cb:
    case RtfWord::Chcbpat:
        state.background = token.number;
        return true;
    case RtfWord::Highlight:
        state.background = token.number > 0 ? token.number : -1;
        return true;
    case RtfWord::Up:
        state.baseline = std::clamp(numberOr(token, 6), 0, largestHalfPoints);
        return true;
    case RtfWord::Dn:
        state.baseline = -std::clamp(numberOr(token, 6), 0, largestHalfPoints);
        return true;
    default:
        return false;
    }
}

} // namespace

int clampTwips(int twips)
{
    return std::clamp(twips, -rtfLongestTwips, rtfLongestTwips);
}

void appendRtfWord(QByteArray &to, const RtfToken &word)
{
    to.append('\\').append(word.text);
    if (word.hasNumber)
        to.append(QByteArray::number(word.number));
}

int RtfKeptWords::indexOf(const QByteArray &sequence, int otherwise)
{
    if (sequence.isEmpty())
        return 0;
    const auto found = m_indices.constFind(sequence);
    if (found != m_indices.constEnd())
        return *found;
    if (m_sequences.size() >= mostSequences)
        return otherwise;
    m_sequences.append(sequence);
    const int index = static_cast<int>(m_sequences.size()) - 1;
    m_indices.insert(sequence, index);
    return index;
}

int RtfKeptWords::append(int index, const RtfToken &word)
{
    QByteArray sequence = at(index);
    if (sequence.size() >= longestSequence)
        return index;
    appendRtfWord(sequence, word);
    return indexOf(sequence, index);
}

int RtfKeptWords::replace(int index, const RtfToken &word)
{
    QByteArray sequence = without(at(index), word.text);
    appendRtfWord(sequence, word);
    return indexOf(sequence, index);
}

void applyCharacterWord(RtfCharState &state, RtfWord word, const RtfToken &token, RtfKeptWords &kept)
{
    if (word == RtfWord::Plain) {
        state.reset();
        return;
    }
    if (word == RtfWord::Nosupersub) {
        state.set(RtfCharState::Super, false);
        state.set(RtfCharState::Sub, false);
        return;
    }
    if (applyFlag(state, word, isOn(token)) || applyNumber(state, word, token)
        || applyUnderline(state, word, token))
        return;
    state.kept = kept.replace(state.kept, token);
}

void applyParagraphWord(RtfParaState &state, RtfWord word, const RtfToken &token, RtfKeptWords &kept)
{
    if (applyAlignment(state, word) || applyLength(state, word, token) || applyTab(state, word, token)
        || applyParagraphFlag(state, word, token) || applyPlace(state, word, token))
        return;
    state.kept = kept.append(state.kept, token);
}

bool isBorderDetail(const RtfToken &token)
{
    return token.text.startsWith("brdr") || token.text == QByteArrayView("brsp");
}

} // namespace vandrel
