#include "frontend/XsdRegex.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace MxCompiler
{

namespace
{

struct CodeRange
{
    char32_t first, last;
};

// The blocks that XSD 1.0 names, with the ranges that Unicode 3.1 gave
// them; a later Unicode renamed some of them (Greek and Coptic, for one),
// so the table is written out rather than read from the system.
struct Block
{
    char const *name;
    CodeRange range;
};

constexpr Block kBlocks[] = {
    {"BasicLatin", {0x0000, 0x007F}},
    {"Latin-1Supplement", {0x0080, 0x00FF}},
    {"LatinExtended-A", {0x0100, 0x017F}},
    {"LatinExtended-B", {0x0180, 0x024F}},
    {"IPAExtensions", {0x0250, 0x02AF}},
    {"SpacingModifierLetters", {0x02B0, 0x02FF}},
    {"CombiningDiacriticalMarks", {0x0300, 0x036F}},
    {"Greek", {0x0370, 0x03FF}},
    {"Cyrillic", {0x0400, 0x04FF}},
    {"Armenian", {0x0530, 0x058F}},
    {"Hebrew", {0x0590, 0x05FF}},
    {"Arabic", {0x0600, 0x06FF}},
    {"Syriac", {0x0700, 0x074F}},
    {"Thaana", {0x0780, 0x07BF}},
    {"Devanagari", {0x0900, 0x097F}},
    {"Bengali", {0x0980, 0x09FF}},
    {"Gurmukhi", {0x0A00, 0x0A7F}},
    {"Gujarati", {0x0A80, 0x0AFF}},
    {"Oriya", {0x0B00, 0x0B7F}},
    {"Tamil", {0x0B80, 0x0BFF}},
    {"Telugu", {0x0C00, 0x0C7F}},
    {"Kannada", {0x0C80, 0x0CFF}},
    {"Malayalam", {0x0D00, 0x0D7F}},
    {"Sinhala", {0x0D80, 0x0DFF}},
    {"Thai", {0x0E00, 0x0E7F}},
    {"Lao", {0x0E80, 0x0EFF}},
    {"Tibetan", {0x0F00, 0x0FFF}},
    {"Myanmar", {0x1000, 0x109F}},
    {"Georgian", {0x10A0, 0x10FF}},
    {"HangulJamo", {0x1100, 0x11FF}},
    {"Ethiopic", {0x1200, 0x137F}},
    {"Cherokee", {0x13A0, 0x13FF}},
    {"UnifiedCanadianAboriginalSyllabics", {0x1400, 0x167F}},
    {"Ogham", {0x1680, 0x169F}},
    {"Runic", {0x16A0, 0x16FF}},
    {"Khmer", {0x1780, 0x17FF}},
    {"Mongolian", {0x1800, 0x18AF}},
    {"LatinExtendedAdditional", {0x1E00, 0x1EFF}},
    {"GreekExtended", {0x1F00, 0x1FFF}},
    {"GeneralPunctuation", {0x2000, 0x206F}},
    {"SuperscriptsandSubscripts", {0x2070, 0x209F}},
    {"CurrencySymbols", {0x20A0, 0x20CF}},
    {"CombiningMarksforSymbols", {0x20D0, 0x20FF}},
    {"LetterlikeSymbols", {0x2100, 0x214F}},
    {"NumberForms", {0x2150, 0x218F}},
    {"Arrows", {0x2190, 0x21FF}},
    {"MathematicalOperators", {0x2200, 0x22FF}},
    {"MiscellaneousTechnical", {0x2300, 0x23FF}},
    {"ControlPictures", {0x2400, 0x243F}},
    {"OpticalCharacterRecognition", {0x2440, 0x245F}},
    {"EnclosedAlphanumerics", {0x2460, 0x24FF}},
    {"BoxDrawing", {0x2500, 0x257F}},
    {"BlockElements", {0x2580, 0x259F}},
    {"GeometricShapes", {0x25A0, 0x25FF}},
    {"MiscellaneousSymbols", {0x2600, 0x26FF}},
    {"Dingbats", {0x2700, 0x27BF}},
    {"BraillePatterns", {0x2800, 0x28FF}},
    {"CJKRadicalsSupplement", {0x2E80, 0x2EFF}},
    {"KangxiRadicals", {0x2F00, 0x2FDF}},
    {"IdeographicDescriptionCharacters", {0x2FF0, 0x2FFF}},
    {"CJKSymbolsandPunctuation", {0x3000, 0x303F}},
    {"Hiragana", {0x3040, 0x309F}},
    {"Katakana", {0x30A0, 0x30FF}},
    {"Bopomofo", {0x3100, 0x312F}},
    {"HangulCompatibilityJamo", {0x3130, 0x318F}},
    {"Kanbun", {0x3190, 0x319F}},
    {"BopomofoExtended", {0x31A0, 0x31BF}},
    {"EnclosedCJKLettersandMonths", {0x3200, 0x32FF}},
    {"CJKCompatibility", {0x3300, 0x33FF}},
    {"CJKUnifiedIdeographsExtensionA", {0x3400, 0x4DB5}},
    {"CJKUnifiedIdeographs", {0x4E00, 0x9FFF}},
    {"YiSyllables", {0xA000, 0xA48F}},
    {"YiRadicals", {0xA490, 0xA4CF}},
    {"HangulSyllables", {0xAC00, 0xD7A3}},
    {"HighSurrogates", {0xD800, 0xDB7F}},
    {"HighPrivateUseSurrogates", {0xDB80, 0xDBFF}},
    {"LowSurrogates", {0xDC00, 0xDFFF}},
    {"PrivateUse", {0xE000, 0xF8FF}},
    {"CJKCompatibilityIdeographs", {0xF900, 0xFAFF}},
    {"AlphabeticPresentationForms", {0xFB00, 0xFB4F}},
    {"ArabicPresentationForms-A", {0xFB50, 0xFDFF}},
    {"CombiningHalfMarks", {0xFE20, 0xFE2F}},
    {"CJKCompatibilityForms", {0xFE30, 0xFE4F}},
    {"SmallFormVariants", {0xFE50, 0xFE6F}},
    {"ArabicPresentationForms-B", {0xFE70, 0xFEFE}},
    {"Specials", {0xFEFF, 0xFEFF}},
    {"HalfwidthandFullwidthForms", {0xFF00, 0xFFEF}},
    {"Specials", {0xFFF0, 0xFFFD}},
    {"OldItalic", {0x10300, 0x1032F}},
    {"Gothic", {0x10330, 0x1034F}},
    {"Deseret", {0x10400, 0x1044F}},
    {"ByzantineMusicalSymbols", {0x1D000, 0x1D0FF}},
    {"MusicalSymbols", {0x1D100, 0x1D1FF}},
    {"MathematicalAlphanumericSymbols", {0x1D400, 0x1D7FF}},
    {"CJKUnifiedIdeographsExtensionB", {0x20000, 0x2A6D6}},
    {"CJKCompatibilityIdeographsSupplement", {0x2F800, 0x2FA1F}},
    {"Tags", {0xE0000, 0xE007F}},
    {"PrivateUse", {0xF0000, 0xFFFFD}},
    {"PrivateUse", {0x100000, 0x10FFFD}},
};

// XML's name characters, which \i and \c stand for.
constexpr CodeRange kNameStart[] = {
    {':', ':'},       {'A', 'Z'},         {'_', '_'},         {'a', 'z'},         {0xC0, 0xD6},
    {0xD8, 0xF6},     {0xF8, 0x2FF},      {0x370, 0x37D},     {0x37F, 0x1FFF},    {0x200C, 0x200D},
    {0x2070, 0x218F}, {0x2C00, 0x2FEF},   {0x3001, 0xD7FF},   {0xF900, 0xFDCF},   {0xFDF0, 0xFFFD},
    {0x10000, 0xEFFFF},
};
constexpr CodeRange kNameOnly[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

constexpr char const *kCategories[] = {"L",  "Lu", "Ll", "Lt", "Lm", "Lo", "M",  "Mn", "Mc", "Me", "N",  "Nd",
                                       "Nl", "No", "P",  "Pc", "Pd", "Ps", "Pe", "Pi", "Pf", "Po", "Z",  "Zs",
                                       "Zl", "Zp", "S",  "Sm", "Sc", "Sk", "So", "C",  "Cc", "Cf", "Co", "Cn"};

constexpr char const *kAnyCharacter = "[\\x{0}-\\x{10FFFF}]";
constexpr char const *kSpaces = "\\x{20}\\x{9}\\x{A}\\x{D}";
constexpr char const *kNotWordCharacters = "\\p{P}\\p{Z}\\p{C}";

std::string Hex(char32_t c)
{
    char text[16];
    std::snprintf(text, sizeof text, "\\x{%X}", static_cast<unsigned>(c));
    return text;
}

// One character as PCRE reads it literally, in a class or outside one.
// Printable ASCII stays readable, with PCRE's special characters escaped;
// the rest is written by number so that the pattern stays ASCII whatever
// the local encoding.
std::string Literal(char32_t c, bool inClass)
{
    if (c <= 0x20 || c >= 0x7F)
        return Hex(c);
    char const special = static_cast<char>(c);
    char const *const specials = inClass ? "\\[]^-" : "\\^$.[]|()?*+{}";
    if (std::strchr(specials, special) != nullptr)
        return std::string("\\") + special;
    return std::string(1, special);
}

// Appends the range to a class body. PCRE refuses surrogate code points in
// UTF-8 mode, and no document holds them, so they are left out.
void AppendRange(std::string &body, char32_t first, char32_t last)
{
    if (first <= 0xDFFF && last >= 0xD800)
    {
        if (first < 0xD800)
            AppendRange(body, first, 0xD7FF);
        if (last > 0xDFFF)
            AppendRange(body, 0xE000, last);
        return;
    }
    body += Literal(first, true);
    if (last != first)
        body += "-" + Literal(last, true);
}

template <std::size_t N> std::string RangesBody(CodeRange const (&ranges)[N])
{
    std::string body;
    for (CodeRange const &r : ranges)
        AppendRange(body, r.first, r.last);
    return body;
}

// "\\p{Nd}" and its kind need no brackets around them.
bool IsOneProperty(std::string const &body)
{
    return body.size() > 4 && body.compare(0, 3, "\\p{") == 0 && body.find('\\', 1) == std::string::npos;
}

// A set of characters as the union of a class body (ranges and property
// escapes) and of complements of other bodies, less what `minus` matches.
struct CharSet
{
    std::string members;
    std::vector<std::string> complements;
    bool negated = false;
    std::string minus; // a PCRE atom, or empty

    void Add(std::string const &body, bool complement)
    {
        if (!complement)
            members += body;
        else if (body.empty())
            members += "\\x{0}-\\x{10FFFF}";
        else
            complements.push_back(body);
    }

    std::string Union() const
    {
        std::vector<std::string> parts;
        if (IsOneProperty(members))
            parts.push_back(members);
        else if (!members.empty())
            parts.push_back("[" + members + "]");
        for (std::string const &c : complements)
            parts.push_back("[^" + c + "]");
        if (parts.empty())
            return "(?!)";
        if (parts.size() == 1)
            return parts[0];
        std::string atom = "(?:" + parts[0];
        for (std::size_t i = 1; i < parts.size(); ++i)
            atom += "|" + parts[i];
        return atom + ")";
    }

    std::string Atom() const
    {
        std::string atom;
        if (!negated)
            atom = Union();
        else if (complements.empty())
            atom = members.empty() ? kAnyCharacter : "[^" + members + "]";
        else
            atom = "(?:(?!" + Union() + ")" + kAnyCharacter + ")";
        if (!minus.empty())
            atom = "(?:(?!" + minus + ")" + atom + ")";
        return atom;
    }
};

class Translator
{
public:
    explicit Translator(std::string const &utf8) : m_text(Decode(utf8)) {}

    std::string Run()
    {
        std::string out = RegExp();
        if (m_at != m_text.size())
            Fail("an unmatched ')'");
        // An empty facet text means "no pattern" to the run-time, while the
        // empty XSD pattern admits only the empty value.
        return out.empty() ? "(?:)" : out;
    }

private:
    std::u32string m_text;
    std::size_t m_at = 0;

    [[noreturn]] void Fail(std::string const &what) const
    {
        throw std::invalid_argument(what + " at character " + std::to_string(m_at + 1));
    }

    static std::u32string Decode(std::string const &utf8)
    {
        std::u32string out;
        for (std::size_t i = 0; i < utf8.size();)
        {
            auto const lead = static_cast<unsigned char>(utf8[i]);
            int const extra = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : -1;
            if (extra < 0 || i + extra >= utf8.size() + (extra ? 0 : 1))
                throw std::invalid_argument("the pattern is not UTF-8");
            char32_t c = extra == 0 ? lead : lead & (0x3F >> extra);
            for (int k = 1; k <= extra; ++k)
            {
                auto const next = static_cast<unsigned char>(utf8[i + k]);
                if ((next & 0xC0) != 0x80)
                    throw std::invalid_argument("the pattern is not UTF-8");
                c = (c << 6) | (next & 0x3F);
            }
            if (c > 0x10FFFF)
                throw std::invalid_argument("the pattern is not UTF-8");
            out.push_back(c);
            i += static_cast<std::size_t>(extra) + 1;
        }
        return out;
    }

    bool AtEnd() const { return m_at >= m_text.size(); }
    char32_t Peek(std::size_t ahead = 0) const
    {
        return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : char32_t(0xFFFFFFFF);
    }

    std::string RegExp()
    {
        std::string out = Branch();
        while (!AtEnd() && Peek() == '|')
        {
            ++m_at;
            out += "|" + Branch();
        }
        return out;
    }

    std::string Branch()
    {
        std::string out;
        while (!AtEnd() && Peek() != '|' && Peek() != ')')
        {
            out += Atom();
            out += Quantifier();
        }
        return out;
    }

    // '{n}', '{n,}' or '{n,m}'; anything else after '{' is not a quantifier.
    bool QuantityAhead(std::size_t &length) const
    {
        std::size_t i = m_at + 1;
        auto digits = [&] {
            std::size_t const start = i;
            while (i < m_text.size() && m_text[i] >= '0' && m_text[i] <= '9')
                ++i;
            return i > start;
        };
        if (!digits())
            return false;
        if (i < m_text.size() && m_text[i] == ',')
        {
            ++i;
            digits();
        }
        if (i >= m_text.size() || m_text[i] != '}')
            return false;
        length = i + 1 - m_at;
        return true;
    }

    std::string Quantifier()
    {
        if (AtEnd())
            return "";
        char32_t const c = Peek();
        if (c == '?' || c == '*' || c == '+')
        {
            ++m_at;
            return std::string(1, static_cast<char>(c));
        }
        std::size_t length = 0;
        if (c != '{' || !QuantityAhead(length))
            return "";
        std::string out;
        for (std::size_t k = 0; k < length; ++k)
            out += static_cast<char>(m_text[m_at + k]);
        m_at += length;
        for (std::size_t start = 1; start < out.size();)
        {
            std::size_t const end = out.find_first_of(",}", start);
            if (end - start > 5 || (end > start && std::stoul(out.substr(start, end - start)) > 65535))
                Fail("a repetition count above 65535");
            start = end + 1;
        }
        return out;
    }

    std::string Atom()
    {
        char32_t const c = Peek();
        switch (c)
        {
        case '(': {
            ++m_at;
            std::string inner = RegExp();
            if (AtEnd() || Peek() != ')')
                Fail("an unclosed '('");
            ++m_at;
            return "(?:" + inner + ")";
        }
        case '[':
            return CharClassExpr().Atom();
        case '.':
            ++m_at;
            return "[^\\x{A}\\x{D}]";
        case '\\': {
            CharSet set;
            char32_t single;
            if (Escape(set, single))
                return Literal(single, false);
            return set.Atom();
        }
        case '?':
        case '*':
        case '+':
            Fail("a quantifier with nothing to repeat");
        default:
            ++m_at;
            return Literal(c, false);
        }
    }

    // Reads an escape at the cursor. A single-character escape gives its
    // character and true; any other adds its set to `set` and gives false.
    bool Escape(CharSet &set, char32_t &single)
    {
        ++m_at; // the backslash
        if (AtEnd())
            Fail("a '\\' at the end");
        char32_t const c = m_text[m_at++];
        switch (c)
        {
        case 'n':
            single = '\n';
            return true;
        case 'r':
            single = '\r';
            return true;
        case 't':
            single = '\t';
            return true;
        case '\\':
        case '|':
        case '.':
        case '?':
        case '*':
        case '+':
        case '(':
        case ')':
        case '{':
        case '}':
        case '-':
        case '[':
        case ']':
        case '^':
            single = c;
            return true;
        case 's':
        case 'S':
            set.Add(kSpaces, c == 'S');
            return false;
        case 'd':
        case 'D':
            set.Add("\\p{Nd}", c == 'D');
            return false;
        case 'w':
        case 'W':
            set.Add(kNotWordCharacters, c == 'w');
            return false;
        case 'i':
        case 'I':
            set.Add(RangesBody(kNameStart), c == 'I');
            return false;
        case 'c':
        case 'C':
            set.Add(RangesBody(kNameStart) + RangesBody(kNameOnly), c == 'C');
            return false;
        case 'p':
        case 'P':
            set.Add(Property(), c == 'P');
            return false;
        default:
            --m_at;
            Fail("an unknown escape");
        }
    }

    // The body of \p{...}: a general category, or Is and a block name.
    std::string Property()
    {
        if (AtEnd() || m_text[m_at] != '{')
            Fail("'\\p' without '{'");
        std::string name;
        for (++m_at; !AtEnd() && m_text[m_at] != '}'; ++m_at)
        {
            if (m_text[m_at] > 0x7E)
                Fail("a property name that is not ASCII");
            name += static_cast<char>(m_text[m_at]);
        }
        if (AtEnd())
            Fail("an unclosed '\\p{'");
        ++m_at;
        if (name.compare(0, 2, "Is") == 0)
        {
            std::string body;
            bool known = false;
            for (Block const &b : kBlocks)
                if (name.compare(2, std::string::npos, b.name) == 0)
                {
                    known = true;
                    AppendRange(body, b.range.first, b.range.last);
                }
            if (!known)
                Fail("an unknown block " + name);
            return body;
        }
        for (char const *category : kCategories)
            if (name == category)
                return "\\p{" + name + "}";
        Fail("an unknown character property " + name);
    }

    // '[' group ('-' class)? ']', the cursor on the '['.
    CharSet CharClassExpr()
    {
        CharSet set;
        ++m_at;
        if (!AtEnd() && Peek() == '^')
        {
            set.negated = true;
            ++m_at;
        }
        bool first = true;
        for (;;)
        {
            if (AtEnd())
                Fail("an unclosed '['");
            char32_t const c = Peek();
            if (c == ']' && !first)
            {
                ++m_at;
                return set;
            }
            if (c == '-' && Peek(1) == '[' && !first)
            {
                ++m_at;
                set.minus = CharClassExpr().Atom();
                if (AtEnd() || Peek() != ']')
                    Fail("a subtraction that is not last in its class");
                ++m_at;
                return set;
            }
            first = false;
            char32_t low;
            if (!ClassCharacter(set, low))
                continue;
            // A '-' makes a range unless it ends the group or starts a
            // subtraction.
            if (Peek() == '-' && Peek(1) != ']' && Peek(1) != '[' && m_at + 1 < m_text.size())
            {
                ++m_at;
                char32_t high;
                CharSet scratch;
                if (!ClassCharacter(scratch, high))
                    Fail("a range that ends in a class escape");
                if (high < low)
                    Fail("a range whose end comes before its start");
                AppendRange(set.members, low, high);
            }
            else
                AppendRange(set.members, low, low);
        }
    }

    // One character of a class, or a class escape added to `set` (false).
    bool ClassCharacter(CharSet &set, char32_t &c)
    {
        if (Peek() == '\\')
            return Escape(set, c);
        c = m_text[m_at++];
        return true;
    }
};

} // namespace

std::string XsdRegexToPcre(std::string const &xsdPattern)
{
    return Translator(xsdPattern).Run();
}

std::string AllOfPcre(std::vector<std::string> const &pcrePatterns)
{
    if (pcrePatterns.empty())
        return "";
    std::string out;
    for (std::size_t i = 0; i + 1 < pcrePatterns.size(); ++i)
        out += "(?=(?:" + pcrePatterns[i] + ")\\z)";
    return pcrePatterns.size() == 1 ? pcrePatterns.back() : out + "(?:" + pcrePatterns.back() + ")";
}

} // namespace MxCompiler
