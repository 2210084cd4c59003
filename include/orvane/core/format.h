#pragma once

#include <span>
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

/// A label pattern for FormatNumber with as many decimals as the values need to show
/// exactly, up to 6 ("0", "0.00"): 178500 rather than 178500.00, 0.25 rather than 0.3.
/// Values reaching 1e6 or more, or all below 1e-3 (zero aside), take "0.###e+00"
/// (1e+06, 2.5e-06). Non-finite values are skipped; none gives "0.##".
std::string LabelFormatFor(std::span<const double> values);

}  // namespace orvane
