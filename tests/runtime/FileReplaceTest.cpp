// A finished buffer replaces a regular file only once it is wholly written:
// a write that fails (a full disk, a file size limit) leaves the earlier
// file and no stray file behind, with the message of an in-place write.
// Pipes, devices, hard-linked files and files in folders that take no new
// file are written in place; a symbolic link keeps pointing at its file.

#include "runtime/FileBinaryStream.h"

#include "support/FileTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace MxXmlLib;
using namespace MxTestSupport;
namespace fs = std::filesystem;

namespace
{
std::string Write(std::string const &path, std::string const &payload, int encoding = 1)
{
    CFileBinaryStream stream(path.c_str(), encoding, CBinaryData(payload.c_str()));
    return ErrorOf([&] { stream.WriteFile(); });
}

std::size_t EntriesIn(std::string const &folder)
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

ino_t Inode(std::string const &path)
{
    struct stat st{};
    EXPECT_EQ(0, ::lstat(path.c_str(), &st));
    return st.st_ino;
}

// Root passes every permission check: the folder tests act as "nobody" then.
class Unprivileged
{
public:
    Unprivileged() : m_wasRoot(::geteuid() == 0)
    {
        if (m_wasRoot)
            EXPECT_EQ(0, ::seteuid(65534));
    }
    ~Unprivileged()
    {
        if (m_wasRoot)
            EXPECT_EQ(0, ::seteuid(0));
    }

private:
    bool m_wasRoot;
};

TEST(FileReplace, RegularFileIsReplacedWholeKeepingItsMode)
{
    TempDir dir;
    std::string const path = dir.Path("out.xml");
    WriteFileBytes(path, "earlier");
    ::chmod(path.c_str(), 0640);
    ino_t const before = Inode(path);
    EXPECT_EQ("no error", Write(path, "<new/>"));
    EXPECT_EQ("<new/>", ReadFileBytes(path));
    EXPECT_NE(before, Inode(path)) << "written beside and renamed, not in place";
    struct stat st{};
    ASSERT_EQ(0, ::stat(path.c_str(), &st));
    EXPECT_EQ(0640u, st.st_mode & 07777);
    EXPECT_EQ(1u, EntriesIn(dir.Path("")));

    // A new file gets the mode of any new file: 0666 less the umask.
    std::string const fresh = dir.Path("fresh.xml");
    EXPECT_EQ("no error", Write(fresh, "<a/>"));
    mode_t const mask = ::umask(0);
    ::umask(mask);
    ASSERT_EQ(0, ::stat(fresh.c_str(), &st));
    EXPECT_EQ(0666u & ~mask, st.st_mode & 07777);
}

// Writes that stop after N bytes, for every N short of the whole: the same
// message as before, the earlier file untouched, nothing else left behind.
TEST(FileReplace, FailedWriteLeavesTheEarlierFile)
{
    TempDir dir;
    std::string const path = dir.Path("kept.bin");
    std::string const payload(40, 'p');
    for (rlim_t n = 0; n <= 42; ++n)
    {
        SCOPED_TRACE(n);
        WriteFileBytes(path, "earlier content");
        std::string error;
        {
            FileSizeLimit limit(n);
            error = Write(path, payload, 2);
        }
        if (n < 42)
        {
            EXPECT_EQ("Failed to write data to the file [" + path + "] error [0x0000001B]", error);
            EXPECT_EQ("earlier content", ReadFileBytes(path));
        }
        else
        {
            EXPECT_EQ("no error", error);
            EXPECT_EQ("\xFF\xFE" + payload, ReadFileBytes(path));
        }
        EXPECT_EQ(1u, EntriesIn(dir.Path("")));
    }
    // With no earlier file, a failure leaves none.
    std::string const fresh = dir.Path("fresh.bin");
    {
        FileSizeLimit limit(3);
        EXPECT_EQ("Failed to write data to the file [" + fresh + "] error [0x0000001B]", Write(fresh, payload));
    }
    EXPECT_FALSE(fs::exists(fresh));
}

TEST(FileReplace, LinksAndFoldersThatTakeNoNewFile)
{
    TempDir dir;
    // A symbolic link stays a link; the file it names gets the bytes.
    std::string const file = dir.Path("file.xml");
    std::string const link = dir.Path("link.xml");
    WriteFileBytes(file, "earlier");
    ASSERT_EQ(0, ::symlink(file.c_str(), link.c_str()));
    EXPECT_EQ("no error", Write(link, "<via-link/>"));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ("<via-link/>", ReadFileBytes(file));

    // A link to no file yet creates that file, as opening through it would.
    std::string const dangling = dir.Path("dangling.xml");
    std::string const named = dir.Path("named.xml");
    ASSERT_EQ(0, ::symlink(named.c_str(), dangling.c_str()));
    EXPECT_EQ("no error", Write(dangling, "<created/>"));
    EXPECT_TRUE(fs::is_symlink(dangling));
    EXPECT_EQ("<created/>", ReadFileBytes(named));

    // Two hard links keep sharing one file: it is written in place.
    std::string const second = dir.Path("second.xml");
    ASSERT_EQ(0, ::link(file.c_str(), second.c_str()));
    EXPECT_EQ("no error", Write(second, "<both/>"));
    EXPECT_EQ("<both/>", ReadFileBytes(file));

    // A folder that takes no new file: an existing writable file in it is
    // written in place, a new one fails as it always did.
    std::string const locked = dir.Path("locked");
    fs::create_directory(locked);
    std::string const inside = locked + "/inside.xml";
    WriteFileBytes(inside, "earlier");
    ::chmod(inside.c_str(), 0666);
    ::chmod(locked.c_str(), 0555);
    ::chmod(dir.Path("").c_str(), 0755);
    {
        Unprivileged nobody;
        EXPECT_EQ("no error", Write(inside, "<in-place/>"));
        std::string const absent = locked + "/absent.xml";
        EXPECT_EQ("Failed to write data to the file [" + absent + "] error [0x0000000D]", Write(absent, "<a/>"));
    }
    EXPECT_EQ("<in-place/>", ReadFileBytes(inside));
    EXPECT_EQ(1u, EntriesIn(locked));
    ::chmod(locked.c_str(), 0755);
}

TEST(FileReplace, PipesAndDevicesAreWrittenInPlace)
{
    EXPECT_EQ("no error", Write("/dev/null", "<gone/>"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ("Failed to write data to the file [/dev/full] error [0x0000001C]", Write("/dev/full", "<full/>"));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));

    TempDir dir;
    std::string const fifo = dir.Path("pipe");
    ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
    std::string received;
    std::thread reader([&] { received = ReadFileBytes(fifo); });
    EXPECT_EQ("no error", Write(fifo, "<through-the-pipe/>"));
    reader.join();
    EXPECT_EQ("<through-the-pipe/>", received);
    EXPECT_TRUE(fs::is_fifo(fifo));
}
} // namespace
