#include "config/config.h"
#include "support/sandbox.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace dorn;

namespace {

constexpr char kFile[] = "config.003";

class ConfigFile : public testing::Test {
  protected:
    ~ConfigFile() override {
        gOptions = ~kOptionProbeFiles;
    }

    uint32_t load(const std::string& bytes) {
        sandbox_.write(kFile, bytes);
        return config_load(config_, sandbox_.path(), kFile);
    }

    static std::string record_bytes(const Config& config) {
        return std::string(reinterpret_cast<const char*>(&config), sizeof config);
    }

    Sandbox sandbox_;
    Config config_;
};

TEST_F(ConfigFile, MissingFileGivesTheDefaultsWithDotFilesHidden) {
    for (const char* directory : {sandbox_.path(), static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(config_load(config_, directory, kFile), 0U);
        EXPECT_EQ(config_.flags, 0x925U);
        EXPECT_EQ(config_.win_width, 600);
        EXPECT_EQ(gOptions, 0xFFFFFBFFU & ~0x104U);
    }
    EXPECT_EQ(init_save_config(&config_, nullptr, kFile), -1);
    EXPECT_EQ(init_save_config(&config_, sandbox_.file("missing").c_str(), kFile), -1);
    EXPECT_EQ(config_.flags, 0x925U) << "unmarked, for nothing was saved";
}

TEST_F(ConfigFile, SavedRecordIsReadBackByteForByte) {
    config_load(config_, sandbox_.path(), kFile);
    config_.flags = kDefaultFlags | kEncodingTryUtf8;
    std::strcpy(config_.alt_encoding, "ISO-8859-1");
    config_.win_width = 1234;
    ASSERT_EQ(init_save_config(&config_, sandbox_.path(), kFile), 0);
    const std::string bytes = sandbox_.read(kFile);
    ASSERT_EQ(bytes.size(), 5692U);
    EXPECT_EQ(bytes[4659], '\xFF');
    EXPECT_EQ(bytes.substr(4648, 4), std::string("\xD2\x04\0\0", 4));
    EXPECT_EQ(bytes.substr(4665, 10), "ISO-8859-1");
    Config again;
    EXPECT_EQ(config_load(again, sandbox_.path(), kFile), kEncodingTryUtf8);
    EXPECT_EQ(record_bytes(again), bytes);
}

TEST_F(ConfigFile, FlagsFollowTheFormatMark) {
    const struct {
        uint32_t in_file, flags, encoding, options;
    } rows[] = {
        {0xFF000924, 0xFF000924, 0, 0xFFFFFBFF},
        {0xFF000925, 0xFF000925, 0, 0xFFFFFAFB},
        {0xFF004001, 0xFF004001, kEncodingAlternate, 0xFFFFFAFB},
        {0x00000000, 0x924, 0, 0xFFFFFBFF},  // an older layout
        {0x00002000, 0x925, 0, 0xFFFFFAFB},
        {0x7F002924, 0x925, 0, 0xFFFFFAFB},
    };
    Config record{};
    for (const auto& row : rows) {
        record.flags = row.in_file;
        EXPECT_EQ(load(record_bytes(record)), row.encoding) << std::hex << row.in_file;
        EXPECT_EQ(config_.flags, row.flags) << std::hex << row.in_file;
        EXPECT_EQ(gOptions, row.options) << std::hex << row.in_file;
    }
}

TEST_F(ConfigFile, ADamagedFileIsTheDefaultsOrHasTerminatedTexts) {
    load(std::string(5691, '\xFF'));
    EXPECT_EQ(config_.win_width, 600);
    EXPECT_EQ(config_.flags, 0x925U);
    EXPECT_EQ(std::strlen(config_.alt_encoding), 1024U);
    load(std::string(5695, '\xFF'));
    EXPECT_EQ(config_.win_width, -1);
    EXPECT_EQ(std::strlen(config_.edit_cmd), 2047U);
    EXPECT_EQ(std::strlen(config_.print_cmd), 1023U);
    EXPECT_EQ(std::strlen(config_.term_cmd), 1023U);
    EXPECT_EQ(std::strlen(config_.hotlist_font), 254U);
    EXPECT_EQ(std::strlen(config_.list_font), 254U);
    EXPECT_EQ(std::strlen(config_.alt_encoding), 1024U);
}

}  // namespace
