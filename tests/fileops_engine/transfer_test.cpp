// File lists as bytes: ours and those of other programs, both ways, whole and damaged.
#include "fileops/engine/transfer.h"

#include <gtest/gtest.h>
#include <unistd.h>

using namespace dorn;

namespace {

const std::string kHostile = "a b\n%1\t'\"\xFF\xC3\xBC#?;";

// "cut /dir:<name><name> /other:<name> left out 2"
std::string told(const TransferLists& arrived) {
    std::string text = arrived.cut ? "cut" : "copy";
    for (const FileTransfer& list : arrived.lists) {
        text += " " + list.directory + ":";
        for (const std::string& name : list.names)
            text += "<" + name + ">";
    }
    if (arrived.foreign > 0) text += " left out " + std::to_string(arrived.foreign);
    return arrived.lists.empty() && arrived.foreign == 0 ? "nothing" : text;
}

TEST(Transfer, EveryTypeGivesTheNamesBackAsTheyWereByteForByte) {
    for (const char* directory : {"/", "/d\xFE ir", "/a/b"}) {
        for (const char* type : {kTypeTransfiles, kTypeGnomeFiles, kTypeMateFiles, kTypeUriList}) {
            TransferLists list{true, {{directory, {"plain", kHostile, std::string(255, 'x')}}}};
            const std::string expected = told(list);
            list.lists[0].names.insert(list.lists[0].names.begin() + 1, "");  // uncut since
            const TransferLists arrived =
                transfer_unpack(transfer_pack(list, type), type, transfer_pack(list, kTypeKdeCut));
            EXPECT_EQ(told(arrived), type == kTypeTransfiles ? told(list) : expected) << type;
        }
    }
}

TEST(Transfer, TheBytesAreThoseThatOtherProgramsRead) {
    const FileTransfer list{"/d", {"a b", "", "\xFF"}};
    const std::tuple<const char*, TransferLists, std::string> rows[] = {
        {kTypeGnomeFiles, {true, {list}}, "cut\nfile:///d/a%20b\nfile:///d/%FF"},
        {kTypeMateFiles, {false, {list}}, "copy\nfile:///d/a%20b\nfile:///d/%FF"},
        {kTypeUriList, {false, {list}}, "file:///d/a%20b\r\nfile:///d/%FF\r\n"},
        {kTypeKdeCut, {true, {list}}, "1"},
        {kTypeKdeCut, {false, {list}}, ""},
        {kTypeText, {false, {list}}, "/d/a b\n/d/\xFF"},
        {kTypeTransfiles,
         {true, {{"/d", {"x"}}}},
         std::string("mvfiles\0\x0F\0\0\0\x01\0\0\0\x02\0\0\0/d\x01\0\0\0x", 27)},
        {kTypeTransfiles, {true, {{"/d", {"", ""}}}}, ""},
        {kTypeGnomeFiles, {true, {{"/d", {"", ""}}}}, ""},
        {kTypeGnomeFiles,
         {true, {{"/a", {"x"}}, {"/b", {"y", "z"}}}},
         "cut\nfile:///a/x\nfile:///b/y\nfile:///b/z"},
    };
    for (const auto& [type, lists, bytes] : rows)
        EXPECT_EQ(transfer_pack(lists, type), bytes) << type;
    const TransferLists two{true, {{"/a", {"x"}}, {"/b", {"y"}}}};
    EXPECT_FALSE(transfer_packs(two, kTypeTransfiles));  // which holds one directory
}

TEST(Transfer, ListsOfOtherProgramsAreReadInAllTheirSpellings) {
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
        {kTypeGnomeFiles, "cut\nfile:///a/x\nfile:///a/y", "", "cut /a:<x><y>"},
        {kTypeGnomeFiles, std::string("copy\r\nfile:///a/x\r\n\0", 20), "", "copy /a:<x>"},
        {kTypeGnomeFiles, "move\nfile:///a/x", "", "nothing"},
        {kTypeGnomeFiles, "cut", "", "nothing"},
        {kTypeMateFiles, "cut\nfile:///%ff", "", "cut /:<\xFF>"},
        {kTypeUriList, "file:///a/x\r\n", "1", "cut /a:<x>"},
        {kTypeUriList, "file:///a/x\r\n", "0", "copy /a:<x>"},
        {kTypeUriList, std::string("file:///a/x\0", 12), "", "copy /a:<x>"},
        {kTypeUriList, "# said\nfile:///a/x\n\n#\nfile:///b/y\nfile:///a/z/", "",
         "copy /a:<x><z> /b:<y>"},
        {kTypeUriList, "FILE:/a/x\nfile://localhost/a/y\nfile://" + std::string(host) + "/a/z", "",
         "copy /a:<x><y><z>"},
        {kTypeUriList, "file:///a//b///x%20%25", "", "copy /a/b:<x %>"},
        {kTypeUriList, "sftp://h/x\nfile:///a/x\ntrash:///y", "", "copy /a:<x> left out 2"},
        {kTypeUriList, "file://elsewhere.invalid/a/x\nfile:relative\nfile://", "",
         "copy left out 3"},
        {kTypeUriList, "file:///\nfile:///a/..\nfile:///a/.\n/a/x", "", "copy left out 4"},
        {kTypeUriList, "file:///a/%\nfile:///a/%4\nfile:///%zz\nfile:///a%00\nfile:///a%2Fb", "",
         "copy left out 5"},
    };
    for (const auto& [type, bytes, kde, expected] : rows)
        EXPECT_EQ(told(transfer_unpack(bytes, type, kde)), expected) << bytes;
    const std::string endless(std::size_t{1} << 20, 'x');
    EXPECT_EQ(transfer_unpack(endless, kTypeUriList).left_out[0].size(), kLeftOutBytes);
}

TEST(Transfer, AListWithADamagedByteIsNoListOrOneOfBaseNames) {
    const std::string whole =
        transfer_pack({false, {{"/dir", {"one", "", "two"}}}}, kTypeTransfiles);
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(told(transfer_unpack(whole.substr(0, size), kTypeTransfiles)), "nothing") << size;
    EXPECT_EQ(told(transfer_unpack(whole + '\0', kTypeTransfiles)), "nothing");
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\1', '/', '\xFF'}) {
            std::string damaged = whole;
            damaged[at] = byte;
            for (const FileTransfer& list : transfer_unpack(damaged, kTypeTransfiles).lists) {
                EXPECT_EQ(list.directory[0], '/');
                for (const std::string& name : list.names)
                    EXPECT_EQ(name.find_first_of(std::string("/\0", 2)), name.npos);
            }
        }
    }
}

}  // namespace
