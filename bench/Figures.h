#pragma once

namespace vandrel::bench {

/// No goal was set for a figure.
constexpr double noGoal = 0;

/// One line of results in milliseconds: ours, the peer's, and the ratio, of which at most `goal` is aimed at. Also
/// leaves the figure for bench/all (bench/figures.py tells how).
void report(const char *what, double ours, const char *peer, double theirs, double goal = noGoal);

/// One line of results of ours alone, of which at most `goal` is aimed at.
void reportAlone(const char *what, double ours, const char *unit, double goal = noGoal);

} // namespace vandrel::bench
