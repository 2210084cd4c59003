// FormatNumber: numeric format patterns.
//
// A value is first turned into decimal digits: the 15 significant digits that printf
// rounds correctly from the binary value, as a digit string D and a point position P
// (the value is 0.D x 10^P; D has no trailing zeros, zero is D = ""). Scaling by percent
// signs and thousands commas only moves P, and rounding to the shown places works on D,
// so no floating-point arithmetic touches the value after the conversion.
//
// A pattern section is cut into tokens (digit placeholders, decimal point, percent,
// exponent, literal text). The integer digits fill the integer placeholders from the
// right; digits left over go to the leftmost placeholder; '#' left of the first '0'
// shows nothing where the number has no digit. Fraction digits fill the fraction
// placeholders from the left; '#' right of the last '0' drops trailing zeros.

#include "orvane/core/format.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

namespace orvane {

namespace {

// ---------------------------------------------------------------------------------------
// Decimal digits

struct Decimal {
  std::string digits;  // significant digits, no trailing zeros; empty for zero
  int point = 0;       // the value is 0.digits x 10^point

  bool IsZero() const { return digits.empty(); }
  void Trim() {
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    if (digits.empty()) point = 0;
  }
  // Keeps the first `keep` digits, rounding half away from zero on the next one.
  void RoundToDigits(long keep) {
    if (keep >= static_cast<long>(digits.size())) return;
    if (keep < 0) {
      digits.clear();
      point = 0;
      return;
    }
    const bool up = digits[static_cast<std::size_t>(keep)] >= '5';
    digits.resize(static_cast<std::size_t>(keep));
    if (up) {
      std::size_t i = digits.size();
      while (i > 0 && digits[i - 1] == '9') digits[--i] = '0';
      if (i == 0) {
        digits.insert(digits.begin(), '1');
        ++point;
      } else {
        ++digits[i - 1];
      }
    }
    Trim();
  }
  // Rounds to `places` digits after the decimal point.
  void RoundToPlaces(int places) { RoundToDigits(static_cast<long>(point) + places); }
  // The digit `index` places from the start of digits (index may lie outside them).
  char DigitAt(long index) const {
    if (index < 0 || index >= static_cast<long>(digits.size())) return '0';
    return digits[static_cast<std::size_t>(index)];
  }
};

// |value| to 15 significant digits. value must be finite.
Decimal ToDecimal(double value) {
  Decimal d;
  if (value == 0.0) return d;
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.14e", std::fabs(value));
  // buffer: d.dddddddddddddde[+-]XXX
  for (const char* p = buffer; *p != 'e'; ++p) {
    if (*p != '.') d.digits.push_back(*p);
  }
  d.point = std::atoi(std::strchr(buffer, 'e') + 1) + 1;
  d.Trim();
  return d;
}

// ---------------------------------------------------------------------------------------
// Pattern tokens

enum class Kind { Zero, Hash, Point, Comma, Percent, Exponent, Literal };

struct Token {
  Kind kind;
  std::string text;         // Literal: the text; Exponent: the letter ("E" or "e")
  bool alwaysSign = false;  // Exponent: E+ rather than E-
  int minDigits = 0;        // Exponent: count of '0' among its digit placeholders
};

bool IsDigitPlaceholder(char c) { return c == '0' || c == '#'; }

std::vector<Token> Tokenize(std::string_view section) {
  std::vector<Token> tokens;
  auto literal = [&tokens](std::string_view text) {
    if (!tokens.empty() && tokens.back().kind == Kind::Literal) {
      tokens.back().text.append(text);
    } else {
      tokens.push_back({Kind::Literal, std::string(text)});
    }
  };
  bool seenPoint = false;
  bool seenExponent = false;
  for (std::size_t i = 0; i < section.size(); ++i) {
    const char c = section[i];
    switch (c) {
      case '0': tokens.push_back({Kind::Zero, {}}); break;
      case '#': tokens.push_back({Kind::Hash, {}}); break;
      case '%': tokens.push_back({Kind::Percent, {}}); break;
      case ',': tokens.push_back({Kind::Comma, {}}); break;
      case '.':
        if (seenPoint || seenExponent) {
          literal(".");
        } else {
          seenPoint = true;
          tokens.push_back({Kind::Point, {}});
        }
        break;
      case '"': {
        const std::size_t end = section.find('"', i + 1);
        const std::size_t stop = end == std::string_view::npos ? section.size() : end;
        literal(section.substr(i + 1, stop - i - 1));
        i = stop;
        break;
      }
      case '\\':
        if (i + 1 < section.size()) literal(section.substr(++i, 1));
        break;
      case 'E':
      case 'e': {
        std::size_t j = i + 2;
        while (j < section.size() && IsDigitPlaceholder(section[j])) ++j;
        const bool isExponent = !seenExponent && i + 1 < section.size() &&
                                (section[i + 1] == '+' || section[i + 1] == '-') && j > i + 2;
        if (!isExponent) {
          literal(section.substr(i, 1));
          break;
        }
        Token t{Kind::Exponent, std::string(1, c)};
        t.alwaysSign = section[i + 1] == '+';
        t.minDigits = static_cast<int>(
            std::count(section.begin() + static_cast<long>(i) + 2,
                       section.begin() + static_cast<long>(j), '0'));
        tokens.push_back(t);
        seenExponent = true;
        i = j - 1;
        break;
      }
      default: literal(section.substr(i, 1)); break;
    }
  }
  return tokens;
}

// What a section's tokens say about the number's layout.
struct Layout {
  std::vector<Token> tokens;
  int intPlaceholders = 0;
  int fracPlaceholders = 0;
  int minInt = 0;   // integer digits always shown (from the first '0' to the point)
  int minFrac = 0;  // fraction digits always shown (up to the last '0')
  int percents = 0;
  int scaleCommas = 0;  // commas right before the point: divide by 1000 each
  bool grouping = false;
  bool hasPoint = false;
  std::optional<std::size_t> exponent;  // index of the exponent token
};

Layout Analyse(std::string_view section) {
  Layout l;
  l.tokens = Tokenize(section);
  // The integer part ends at the point, or at the exponent, or after the last placeholder.
  std::size_t intEnd = l.tokens.size();
  for (std::size_t i = 0; i < l.tokens.size(); ++i) {
    if (l.tokens[i].kind == Kind::Point || l.tokens[i].kind == Kind::Exponent) {
      intEnd = i;
      break;
    }
  }
  std::size_t lastIntDigit = intEnd;  // index of the last integer placeholder, if any
  bool inFraction = false;
  bool seenFirstZero = false;
  int lastFracZero = 0;
  for (std::size_t i = 0; i < l.tokens.size(); ++i) {
    const Token& t = l.tokens[i];
    switch (t.kind) {
      case Kind::Zero:
      case Kind::Hash:
        if (l.exponent) break;
        if (!inFraction && i < intEnd) {
          ++l.intPlaceholders;
          if (t.kind == Kind::Zero) seenFirstZero = true;
          if (seenFirstZero) ++l.minInt;
          lastIntDigit = i;
        } else {
          ++l.fracPlaceholders;
          if (t.kind == Kind::Zero) lastFracZero = l.fracPlaceholders;
        }
        break;
      case Kind::Point:
        inFraction = true;
        l.hasPoint = true;
        break;
      case Kind::Percent: ++l.percents; break;
      case Kind::Exponent: l.exponent = i; break;
      default: break;
    }
  }
  l.minFrac = lastFracZero;
  // Commas: a run right after the last integer placeholder (before the point or the
  // end of the digits) scales; a comma with placeholders on both sides groups.
  if (l.intPlaceholders > 0) {
    std::size_t i = lastIntDigit + 1;
    while (i < intEnd && l.tokens[i].kind == Kind::Comma) {
      ++l.scaleCommas;
      ++i;
    }
    bool placeholderBefore = false;
    for (std::size_t k = 0; k < lastIntDigit; ++k) {
      const Kind kind = l.tokens[k].kind;
      if (kind == Kind::Zero || kind == Kind::Hash) placeholderBefore = true;
      if (kind == Kind::Comma && placeholderBefore) l.grouping = true;
    }
  }
  return l;
}

// ---------------------------------------------------------------------------------------
// Writing one section

struct Rendered {
  std::string text;
  bool allZero = true;  // every shown digit is zero
};

// Writes the digits of d into the section's layout.
Rendered RenderSection(const Layout& l, Decimal d) {
  d.point += 2 * l.percents - 3 * l.scaleCommas;
  if (d.IsZero()) d.point = 0;

  std::string intDigits;
  std::string fracDigits;
  int exponent = 0;
  if (l.exponent) {
    const int mantissaInt = std::max(1, l.intPlaceholders);
    d.RoundToDigits(mantissaInt + l.fracPlaceholders);
    if (!d.IsZero()) exponent = d.point - mantissaInt;
    for (int k = 0; k < mantissaInt; ++k) intDigits.push_back(d.DigitAt(k));
    for (int k = 0; k < l.fracPlaceholders; ++k) fracDigits.push_back(d.DigitAt(mantissaInt + k));
  } else {
    d.RoundToPlaces(l.fracPlaceholders);
    for (int k = 0; k < d.point; ++k) intDigits.push_back(d.DigitAt(k));
    for (int k = 0; k < l.fracPlaceholders; ++k) fracDigits.push_back(d.DigitAt(d.point + k));
  }
  // Leading zeros are not significant; '0' placeholders bring them back below.
  const std::size_t firstNonZero = intDigits.find_first_not_of('0');
  intDigits.erase(0, firstNonZero == std::string::npos ? intDigits.size() : firstNonZero);
  if (intDigits.size() < static_cast<std::size_t>(l.minInt)) {
    intDigits.insert(0, static_cast<std::size_t>(l.minInt) - intDigits.size(), '0');
  }
  // Fraction digits beyond the last '0' placeholder are shown only up to the last non-zero.
  std::size_t fracShown = fracDigits.find_last_not_of('0');
  fracShown = fracShown == std::string::npos ? 0 : fracShown + 1;
  fracShown = std::max(fracShown, static_cast<std::size_t>(l.minFrac));

  Rendered out;
  out.allZero = d.IsZero();
  const bool groupDigits = l.grouping && !l.exponent;
  // Emits integer digit at position `pos` (from the left) with its group separator.
  auto emitIntDigit = [&](std::size_t pos) {
    out.text.push_back(intDigits[pos]);
    const std::size_t right = intDigits.size() - pos - 1;
    if (groupDigits && right > 0 && right % 3 == 0) out.text.push_back(',');
  };

  int intSeen = 0;  // integer placeholders passed so far
  int fracSeen = 0;
  bool wroteInteger = l.intPlaceholders > 0;
  bool afterPoint = false;  // past the decimal point or the exponent
  std::size_t nextInt = 0;  // next integer digit to write
  for (std::size_t index = 0; index < l.tokens.size(); ++index) {
    const Token& t = l.tokens[index];
    switch (t.kind) {
      case Kind::Zero:
      case Kind::Hash: {
        if (l.exponent && index > *l.exponent) break;  // placeholders after the exponent
        if (intSeen < l.intPlaceholders) {
          ++intSeen;
          // Placeholder number intSeen (from the left) owns the digits that leave exactly
          // (intPlaceholders - intSeen) digits for the placeholders to its right.
          const std::size_t remaining = static_cast<std::size_t>(l.intPlaceholders - intSeen);
          while (nextInt < intDigits.size() && intDigits.size() - nextInt > remaining) {
            emitIntDigit(nextInt++);
          }
        } else if (fracSeen < l.fracPlaceholders) {
          if (static_cast<std::size_t>(fracSeen) < fracShown) {
            out.text.push_back(fracDigits[static_cast<std::size_t>(fracSeen)]);
          }
          ++fracSeen;
        }
        break;
      }
      case Kind::Point:
        if (!wroteInteger) {
          while (nextInt < intDigits.size()) emitIntDigit(nextInt++);
          wroteInteger = true;
        }
        if (fracShown > 0) out.text.push_back('.');
        afterPoint = true;
        break;
      case Kind::Percent: out.text.push_back('%'); break;
      case Kind::Comma:
        // Inside the integer part a comma groups or scales; after the point it is text.
        if (afterPoint) out.text.push_back(',');
        break;
      case Kind::Exponent: {
        afterPoint = true;
        out.text += t.text;
        const std::string digits = std::to_string(std::abs(exponent));
        if (exponent < 0) {
          out.text.push_back('-');
        } else if (t.alwaysSign) {
          out.text.push_back('+');
        }
        if (digits.size() < static_cast<std::size_t>(t.minDigits)) {
          out.text.append(static_cast<std::size_t>(t.minDigits) - digits.size(), '0');
        }
        out.text += digits;
        break;
      }
      case Kind::Literal: out.text += t.text; break;
    }
  }
  return out;
}

// ---------------------------------------------------------------------------------------
// Sections and named formats

std::vector<std::string> SplitSections(const std::string& pattern) {
  std::vector<std::string> sections(1);
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (c == ';' && sections.size() < 3) {
      sections.emplace_back();
      continue;
    }
    sections.back().push_back(c);
    if (c == '\\' && i + 1 < pattern.size()) {
      sections.back().push_back(pattern[++i]);
    } else if (c == '"') {
      const std::size_t end = pattern.find('"', i + 1);
      const std::size_t stop = end == std::string::npos ? pattern.size() - 1 : end;
      sections.back().append(pattern, i + 1, stop - i);
      i = stop;
    }
  }
  return sections;
}

std::string GeneralNumber(double value) {
  Decimal d = ToDecimal(value);
  if (d.IsZero()) return "0";
  const std::string sign = value < 0 ? "-" : "";
  const int e10 = d.point - 1;  // value = d.ddd x 10^e10
  if (e10 >= -5 && e10 < 15) {
    const std::string fixed = RenderSection(Analyse("0.##############################"), d).text;
    return sign + fixed;
  }
  std::string mantissa = d.digits.substr(0, 1);
  if (d.digits.size() > 1) mantissa += "." + d.digits.substr(1);
  const std::string digits = std::to_string(std::abs(e10));
  return sign + mantissa + (e10 < 0 ? "E-" : "E+") + (digits.size() < 2 ? "0" : "") + digits;
}

std::string Lower(const std::string& text) {
  std::string out = text;
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

std::optional<std::string> NamedFormat(double value, const std::string& pattern) {
  const std::string name = Lower(pattern);
  if (name == "general number") return GeneralNumber(value);
  if (name == "fixed") return FormatNumber(value, "0.00");
  if (name == "standard") return FormatNumber(value, "#,##0.00");
  if (name == "percent") return FormatNumber(value, "0.00%");
  if (name == "scientific") return FormatNumber(value, "0.00E+00");
  if (name == "currency") return FormatNumber(value, "\"\xC2\xA4\"#,##0.00;(\"\xC2\xA4\"#,##0.00)");
  if (name == "yes/no") return std::string(value != 0.0 ? "Yes" : "No");
  if (name == "true/false") return std::string(value != 0.0 ? "True" : "False");
  if (name == "on/off") return std::string(value != 0.0 ? "On" : "Off");
  return std::nullopt;
}

}  // namespace

std::string FormatNumber(double value, const std::string& pattern) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  if (pattern.empty()) return GeneralNumber(value);
  if (auto named = NamedFormat(value, pattern)) return *named;

  const std::vector<std::string> sections = SplitSections(pattern);
  const bool negative = value < 0;
  const bool hasNegative = sections.size() >= 2 && !sections[1].empty();
  const bool hasZero = sections.size() >= 3 && !sections[2].empty();
  const Decimal digits = ToDecimal(value);

  if (value == 0.0 && hasZero) return RenderSection(Analyse(sections[2]), digits).text;
  if (negative && hasNegative) {
    Rendered r = RenderSection(Analyse(sections[1]), digits);
    if (r.allZero && hasZero) return RenderSection(Analyse(sections[2]), Decimal{}).text;
    return r.text;
  }
  Rendered r = RenderSection(Analyse(sections[0]), digits);
  if (r.allZero && hasZero && value != 0.0) {
    return RenderSection(Analyse(sections[2]), Decimal{}).text;
  }
  if (negative && !r.allZero) return "-" + r.text;
  return r.text;
}

std::string LabelFormatFor(std::span<const double> values) {
  double largest = 0.0;
  bool any = false;
  for (const double v : values) {
    if (!std::isfinite(v)) continue;
    any = true;
    largest = std::max(largest, std::fabs(v));
  }
  if (!any) return "0.##";
  if (largest >= 1e6 || (largest > 0.0 && largest < 1e-3)) return "0.###e+00";
  // The fewest decimals that show every value to within a billionth of its last place:
  // ticks at Min + i * MajorInterval carry the sum's rounding (0.1 * 3 is
  // 0.30000000000000004), which must not ask for 17 digits.
  for (int decimals = 0; decimals < 6; ++decimals) {
    const double scale = std::pow(10.0, decimals);
    bool exact = true;
    for (const double v : values) {
      if (!std::isfinite(v)) continue;
      const double scaled = v * scale;
      exact = exact && std::fabs(scaled - std::round(scaled)) <= 1e-9 * std::max(1.0, std::fabs(scaled));
    }
    if (exact) return decimals == 0 ? "0" : "0." + std::string(static_cast<std::size_t>(decimals), '0');
  }
  return "0.000000";
}

}  // namespace orvane
