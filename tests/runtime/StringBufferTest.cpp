#include "runtime/StringBuffer.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace MxXmlLib;

namespace
{

TEST(StringBuffer, FillsChunksOfExactly4095Bytes)
{
    CStringBuffer buffer;
    std::string text(4095, 'a');
    buffer.Append(text.c_str());
    EXPECT_EQ(1u, buffer.GetChunkCount());
    EXPECT_EQ(4095u, buffer.GetLength());
    buffer.AppendChar('b');
    EXPECT_EQ(2u, buffer.GetChunkCount());
    EXPECT_EQ(4096u, buffer.GetLength());
    EXPECT_EQ(text + "b", buffer.GetText());
}

TEST(StringBuffer, EmptyBufferGivesEmptyTextWithoutAChunk)
{
    CStringBuffer buffer;
    EXPECT_STREQ("", buffer.GetText());
    EXPECT_EQ(0u, buffer.GetChunkCount());
    buffer.Append("");
    buffer.Append(nullptr);
    EXPECT_EQ(0u, buffer.GetChunkCount());
    EXPECT_EQ(0u, buffer.GetLength());
}

TEST(StringBuffer, JoinedTextIsOneFullChunk)
{
    CStringBuffer buffer;
    std::string text(5000, 'x');
    buffer.Append(text.c_str());
    EXPECT_EQ(text, buffer.GetText());
    EXPECT_EQ(1u, buffer.GetChunkCount());
    EXPECT_EQ(5000u, buffer.GetCapacity());
    buffer.AppendChar('y'); // the joined chunk is full: a new one opens
    EXPECT_EQ(2u, buffer.GetChunkCount());
    EXPECT_EQ(text + "y", buffer.GetText());
    EXPECT_EQ(1u, buffer.GetChunkCount());
}

TEST(StringBuffer, ClearKeepsASingleChunk)
{
    CStringBuffer buffer;
    buffer.Append(std::string(5000, 'x').c_str());
    buffer.GetText();
    buffer.Clear();
    EXPECT_EQ(1u, buffer.GetChunkCount());
    EXPECT_EQ(5000u, buffer.GetCapacity());
    EXPECT_EQ(0u, buffer.GetLength());
    EXPECT_STREQ("", buffer.GetText());
    buffer.Append("abc");
    EXPECT_STREQ("abc", buffer.GetText());

    // Several chunks are freed by Clear.
    buffer.Append(std::string(6000, 'z').c_str());
    EXPECT_EQ(2u, buffer.GetChunkCount());
    buffer.Clear();
    EXPECT_EQ(0u, buffer.GetChunkCount());
    EXPECT_EQ(0u, buffer.GetLength());

    buffer.Append("q");
    buffer.Empty();
    EXPECT_EQ(0u, buffer.GetChunkCount());
    EXPECT_STREQ("", buffer.GetText());
}

// Random pieces, characters, joins and clearings against std::string.
TEST(StringBuffer, MatchesAStringUnderRandomUse)
{
    std::mt19937 random(11);
    for (int round = 0; round < 40; ++round)
    {
        CStringBuffer buffer;
        std::string expected;
        for (int step = 0; step < 300; ++step)
        {
            int action = static_cast<int>(random() % 100);
            if (action < 45)
            {
                std::string piece(random() % (round % 4 == 0 ? 9000 : 60), static_cast<char>('a' + step % 26));
                buffer.Append(piece.c_str());
                expected += piece;
            }
            else if (action < 90)
            {
                char c = static_cast<char>('A' + step % 26);
                buffer.AppendChar(c);
                expected += c;
            }
            else if (action < 96)
            {
                ASSERT_EQ(expected, buffer.GetText());
            }
            else
            {
                buffer.Clear();
                expected.clear();
            }
            ASSERT_EQ(expected.size(), buffer.GetLength());
        }
        ASSERT_EQ(expected, buffer.GetText());
    }
}

} // namespace
