#pragma once

#include <string>

namespace orvane {

/// Formats a number with a numeric format pattern in the invariant culture, as axis and
/// contour labels do. Pattern characters:
///   0  a digit, or 0 where the number has none       #  a digit, or nothing
///   .  decimal point (the first one)                  ,  thousands separator between
///      integer placeholders; one or more right before the decimal point divide by 1000 each
///   %  multiply by 100 and show "%"                   E+ E- e+ e-  scientific notation with
///      the exponent digits that follow (E+ always shows the sign, E- only a minus)
///   "text" and \c  literal text                       ;  separates up to three sections:
///      positive;negative;zero (the negative section shows no minus of its own)
/// Any other character is copied as it is. The value is taken to 15 significant digits
/// and rounded half away from zero at the last shown place (2.675 with "0.00" -> "2.68");
/// a value that rounds to zero shows no minus and uses the zero section when there is one.
/// An empty pattern gives the general form ("1234.5", "1E+20"); the named formats
/// "General Number", "Fixed", "Standard", "Percent", "Scientific", "Currency", "Yes/No",
/// "True/False" and "On/Off" are understood. NaN and infinities give "NaN", "Infinity"
/// and "-Infinity". Never throws for any pattern.
std::string FormatNumber(double value, const std::string& pattern);

}  // namespace orvane
