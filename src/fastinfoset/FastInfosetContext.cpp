#include "fastinfoset/FastInfosetContext.h"

#include "values/Variant.h"

namespace MxXmlLib
{

char const CFastInfosetContext::kDefaultVocabularyURI[] = "urn:mxxmllib:fastinfoset:vocabulary:16.1";

CFastInfosetContext::CFastInfosetContext()
    : DefaultStringEncoding(0), Encodings(), AttributeMaxAddLength(6), ElementMaxAddLength(6),
      UseGeneratedVocabulary(false), ReadsBackAsXml(false)
{
}

void CFastInfosetContext::SetSuggestedValues()
{
    enum : std::uint32_t
    {
        Text = 0,
        Alphabet = 1,
        Algorithm = 2
    };
    enum : std::uint32_t
    {
        Numeric = 1,
        DateTime = 2
    };
    enum : std::uint32_t
    {
        Hex = 1,
        Base64 = 2,
        Short = 3,
        Int = 4,
        Long = 5,
        Boolean = 6,
        Float = 7,
        Double = 8
    };
    struct Row
    {
        ItemType type;
        std::uint32_t kind;
        std::uint32_t value;
    };
    // Each unsigned type takes the next wider signed algorithm, but ui8 has
    // none wider: values beyond the signed range fail in the conversion.
    static constexpr Row kRows[] = {
        {ItemType_hexBinary, Algorithm, Hex},  {ItemType_base64Binary, Algorithm, Base64},
        {ItemType_i1, Algorithm, Short},       {ItemType_i2, Algorithm, Short},
        {ItemType_i4, Algorithm, Int},         {ItemType_i8, Algorithm, Long},
        {ItemType_ui1, Algorithm, Short},      {ItemType_ui2, Algorithm, Int},
        {ItemType_ui4, Algorithm, Long},       {ItemType_ui8, Algorithm, Long},
        {ItemType_r4, Algorithm, Float},       {ItemType_r8, Algorithm, Double},
        {ItemType_duration, Text, 0},          {ItemType_yearMonth, Alphabet, DateTime},
        {ItemType_monthDay, Alphabet, DateTime}, {ItemType_year, Alphabet, DateTime},
        {ItemType_month, Alphabet, DateTime},  {ItemType_day, Alphabet, DateTime},
        {ItemType_date, Alphabet, DateTime},   {ItemType_datetime, Alphabet, DateTime},
        {ItemType_time, Alphabet, DateTime},   {ItemType_boolean, Algorithm, Boolean},
        {ItemType_decimal, Alphabet, Numeric}, {ItemType_integer, Alphabet, Numeric},
    };
    for (Row const &row : kRows)
    {
        Encodings[row.type].Type = row.kind;
        Encodings[row.type].Value = row.value;
    }
}

} // namespace MxXmlLib
