#include "runtime/TextStream.h"

#include <gtest/gtest.h>

#include <string>

using namespace MxXmlLib;

namespace
{

TEST(TextStream, GathersPiecesAndCharacters)
{
    CTextStream stream;
    stream.Start();
    stream.Write("<a");
    stream.Put('>');
    stream.Write("");
    stream.Write("text");
    stream.Write("</a>");
    EXPECT_EQ(11u, stream.GetLength());
    EXPECT_STREQ("<a>text</a>", stream.Text());
    stream.Flush(); // a memory stream keeps everything
    stream.End();
    EXPECT_STREQ("<a>text</a>", stream.Text());
    EXPECT_EQ(0, stream.GetEncoding());
}

TEST(TextStream, StartEmpties)
{
    CTextStream stream(2);
    EXPECT_EQ(2, stream.GetEncoding());
    stream.Write(std::string(10000, 'x').c_str());
    stream.Start();
    EXPECT_EQ(0u, stream.GetLength());
    EXPECT_STREQ("", stream.Text());
}

TEST(TextStream, LongPieceIsAddedWhole)
{
    CTextStream stream;
    std::string piece(20000, 'v');
    stream.Put('<');
    stream.Write(piece.c_str());
    EXPECT_EQ(20001u, stream.GetLength());
    EXPECT_EQ("<" + piece, stream.Text());
}

} // namespace
