// Nicolas Seriot's JSONTestSuite (data/JSONTestSuite, with its licence)
// through CJsonTextReader with comments off: y_ files read, n_ files refused
// with one of the reader's own messages, i_ files either way, and nothing
// crashes or recurses without bound (the suite has 100,000 open brackets).
// The reader keeps deliberate departures from RFC 8259; the n_ files that it
// accepts because of them are listed below by departure, and docs/corpora.md
// holds the table.

#include "collections/Element.h"
#include "json/JsonHandlers.h"
#include "json/JsonTextReader.h"
#include "runtime/MxException.h"

#include "support/FileTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>

using namespace MxXmlLib;

namespace
{
std::string const kSuiteDir = std::string(MX_TEST_DATA_DIR) + "/JSONTestSuite/test_parsing";

// What stands before the first variable part of each of the reader's messages.
char const *const kMessageStarts[] = {
    "JSON exceeded depth limit at line ",
    "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found '",
    "Unexpected End of File. Expected Array terminator character ']' at line ",
    "Expected Array separator character ',', found '",
    "Unexpected End of File. Expected Object terminator character '}}' at line ",
    "Unexpected End of File. Expected Object terminator character '}' at line ",
    "Expected Object separator character ',', found '",
    "Expected quotation mark character '\"' before Name, found '",
    "Unexpected End of File. Expected Object Name/Value separator character ':' at line ",
    "Expected Object Name/Value separator character ':', found '",
    "Unexpected End of File. Expected Object Value at line ",
    "Unexpected End of File. Expected value 'NULL' at line ",
    "Expected 'NULL' at line ",
    "Unexpected End of File. Expected value 'true' at line ",
    "Expected 'true' at line ",
    "Unexpected End of File. Expected value 'false' at line ",
    "Expected 'false' at line ",
    "Unexpected End of File. Expected a number at line ",
    "Expected a digit '0' to '9', found '",
    "Unexpected End of File. Expected a digit '0' to '9' at line ",
    "Unexpected End of File. Expected '+', '-' or a number at line ",
    "Unexpected End of File. Expected string value at line ",
    "Unexpected End of File. Expected 4 hexadecimal digits'\\uxxxx' at line ",
    "Invalid Escape Character '",
};

// n_ files the reader accepts, by the departure that lets them through.
char const *const kTrailingText = "text after the first value is not looked at";
char const *const kRawBytes = "control characters and any byte stand in strings as they are";
char const *const kUnicodeEscape = "the four characters after \\u are not checked";
char const *const kEmptyText = "an empty or blank text is an empty document";
std::map<std::string, char const *> const kAcceptedByDesign = {
    {"n_array_comma_after_close.json", kTrailingText},
    {"n_array_extra_close.json", kTrailingText},
    {"n_object_trailing_comment.json", kTrailingText},
    {"n_object_trailing_comment_open.json", kTrailingText},
    {"n_object_trailing_comment_slash_open.json", kTrailingText},
    {"n_object_trailing_comment_slash_open_incomplete.json", kTrailingText},
    {"n_object_with_trailing_garbage.json", kTrailingText},
    {"n_string_with_trailing_garbage.json", kTrailingText},
    {"n_structure_array_trailing_garbage.json", kTrailingText},
    {"n_structure_array_with_extra_array_close.json", kTrailingText},
    {"n_structure_close_unopened_array.json", kTrailingText},
    {"n_structure_double_array.json", kTrailingText},
    {"n_structure_number_with_trailing_garbage.json", kTrailingText},
    {"n_structure_object_followed_by_closing_object.json", kTrailingText},
    {"n_structure_object_with_trailing_garbage.json", kTrailingText},
    {"n_structure_trailing_#.json", kTrailingText},
    {"n_multidigit_number_then_00.json", kTrailingText},
    {"n_string_unescaped_ctrl_char.json", kRawBytes},
    {"n_string_unescaped_newline.json", kRawBytes},
    {"n_string_unescaped_tab.json", kRawBytes},
    {"n_string_invalid_unicode_escape.json", kUnicodeEscape},
    {"n_single_space.json", kEmptyText},
    {"n_structure_no_data.json", kEmptyText},
};

std::string Read(std::string const &text)
{
    CJsonTextReader reader(&text, new CJsonReaderDefaultHandler);
    reader.SetAllowComments(false);
    try
    {
        reader.Parse();
    }
    catch (CMxValidationException const &e)
    {
        return e.GetMessage().substr(0, e.GetMessage().find("\nPath: "));
    }
    return "";
}

TEST(JsonTestSuite, YesReadNoRefusedWithOurMessagesBarTheListedDepartures)
{
    std::set<std::string> names;
    for (auto const &entry : std::filesystem::directory_iterator(kSuiteDir))
        names.insert(entry.path().filename().string());
    ASSERT_EQ(318u, names.size());
    int y = 0, n = 0, nAccepted = 0, iAccepted = 0, iRefused = 0;
    for (std::string const &name : names)
    {
        SCOPED_TRACE(name);
        std::string const message = Read(MxTestSupport::ReadFileBytes(kSuiteDir + "/" + name));
        if (!message.empty())
            EXPECT_TRUE(std::any_of(std::begin(kMessageStarts), std::end(kMessageStarts),
                                    [&](char const *start) { return message.rfind(start, 0) == 0; }))
                << message;
        bool const listed = kAcceptedByDesign.count(name) != 0;
        switch (name[0])
        {
        case 'y':
            ++y;
            EXPECT_EQ("", message);
            break;
        case 'n':
            ++n;
            EXPECT_EQ(listed, message.empty()) << message;
            nAccepted += message.empty();
            break;
        default:
            (message.empty() ? iAccepted : iRefused)++;
        }
    }
    for (auto const &row : kAcceptedByDesign)
        EXPECT_TRUE(names.count(row.first)) << row.first << " is not in the suite";
    std::printf("JSONTestSuite: y %d read; n %d, of which %d accepted by design; i %d accepted, %d refused\n", y, n,
                nAccepted, iAccepted, iRefused);
}

// The whole way in, JSON to XML text to an untyped element, for every file:
// a filled element or a CMxException, never a crash or a hang.
TEST(JsonTestSuite, EveryFileReadsIntoAnUntypedElementOrFailsCleanly)
{
    Register(16, 1);
    int read = 0, refused = 0;
    for (auto const &entry : std::filesystem::directory_iterator(kSuiteDir))
    {
        SCOPED_TRACE(entry.path().filename().string());
        std::string bytes = MxTestSupport::ReadFileBytes(entry.path().string());
        CSmartPtr<CElement> element(new CElement("unread"));
        try
        {
            element->FromJsonStream(reinterpret_cast<unsigned char *>(bytes.data()),
                                    static_cast<unsigned long>(bytes.size()));
            ++read;
        }
        catch (CMxException const &)
        {
            ++refused;
        }
    }
    EXPECT_EQ(318, read + refused);
    std::printf("JSONTestSuite into CElement: %d read, %d refused\n", read, refused);
}
} // namespace
