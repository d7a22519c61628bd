#pragma once

#include <QColor>

/// How well colours are told from each other, by the Web Content Accessibility Guidelines 2.1. Pure functions of opaque
/// colours; alpha is not looked at. Any thread.

/// The least ratio between a text and its ground (success criterion 1.4.3).
constexpr double leastTextContrast = 4.5;
/// The least ratio between a control and what is beside it (success criterion 1.4.11).
constexpr double leastControlContrast = 3.0;

/// From 0 for black to 1 for white ("relative luminance").
[[nodiscard]] double relativeLuminance(const QColor &color);

/// From 1 for two colours alike to 21 for black and white; the order does not matter ("contrast ratio").
[[nodiscard]] double contrastRatio(const QColor &one, const QColor &other);

/// Black or white, whichever is read better on `ground`: at least 4.58 to 1 on any.
[[nodiscard]] QColor textOn(const QColor &ground);
