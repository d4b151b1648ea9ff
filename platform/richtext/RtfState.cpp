#include "platform/richtext/RtfState.h"

#include <QHash>

namespace vandrel {

namespace {

constexpr int RtfCharState::*charNumbers[] = {
    &RtfCharState::font,     &RtfCharState::halfPoints, &RtfCharState::colour, &RtfCharState::background,
    &RtfCharState::baseline, &RtfCharState::style,      &RtfCharState::kept,
};

/// What a style may say; where the paragraph stands in tables and lists of the old kind is its own affair.
constexpr int RtfParaState::*paraNumbers[] = {
    &RtfParaState::alignment,   &RtfParaState::left,
    &RtfParaState::right,       &RtfParaState::first,
    &RtfParaState::before,      &RtfParaState::after,
    &RtfParaState::lineSpacing, &RtfParaState::lineSpacingMultiple,
    &RtfParaState::keepLines,   &RtfParaState::keepNext,
    &RtfParaState::rightToLeft, &RtfParaState::pageBreakBefore,
    &RtfParaState::list,        &RtfParaState::level,
    &RtfParaState::shading,     &RtfParaState::kept,
};

template<typename State, std::size_t count>
void copyWhatIsSet(State &to, const State &from, int State::*const (&numbers)[count])
{
    for (int State::*number : numbers) {
        if (from.*number != rtfUnset)
            to.*number = from.*number;
    }
}

} // namespace

RtfCharState RtfCharState::unset()
{
    RtfCharState state;
    for (int RtfCharState::*number : charNumbers)
        state.*number = rtfUnset;
    return state;
}

void RtfCharState::set(Flag flag, bool on)
{
    flagsSet = static_cast<quint16>(flagsSet | flag);
    flags = static_cast<quint16>(on ? flags | flag : flags & ~flag);
}

void RtfCharState::reset()
{
    const int belongsTo = field;
    *this = RtfCharState();
    field = belongsTo;
}

void RtfCharState::overlay(const RtfCharState &from)
{
    const int ownWords = kept;
    copyWhatIsSet(*this, from, charNumbers);
    kept = ownWords;
    flags = static_cast<quint16>((flags & ~from.flagsSet) | (from.flags & from.flagsSet));
    flagsSet = static_cast<quint16>(flagsSet | from.flagsSet);
}

bool operator==(const RtfCharState &a, const RtfCharState &b)
{
    return a.font == b.font && a.halfPoints == b.halfPoints && a.flags == b.flags && a.colour == b.colour
        && a.background == b.background && a.baseline == b.baseline && a.style == b.style && a.kept == b.kept
        && a.field == b.field;
}

size_t qHash(const RtfCharState &state, size_t seed)
{
    return qHashMulti(seed, state.font, state.halfPoints, state.flags, state.colour, state.background,
                      state.baseline, state.style, state.kept, state.field);
}

RtfParaState RtfParaState::unset()
{
    RtfParaState state;
    for (int RtfParaState::*number : paraNumbers)
        state.*number = rtfUnset;
    return state;
}

void RtfParaState::overlay(const RtfParaState &from)
{
    const int ownWords = kept;
    copyWhatIsSet(*this, from, paraNumbers);
    kept = ownWords;
    if (!from.tabs.isEmpty())
        tabs = from.tabs;
}

size_t qHash(const RtfParaState &state, size_t seed)
{
    size_t hash
        = qHashMulti(seed, state.inTable, state.tableDepth, state.style, state.legacyList, state.tabs.size());
    for (int RtfParaState::*number : paraNumbers)
        hash = qHashMulti(hash, state.*number);
    return hash;
}

} // namespace vandrel
