#include "volume/ata_serial.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "gtest/gtest.h"

namespace {

using winutil::volume::AtaSerial;
using winutil::volume::copySerial;

// The serial number that is read from identify data with these bytes in words 10 to 19.
std::string serialOf(std::string_view words) {
    std::array<std::byte, 512> data;
    data.fill(std::byte{0xEE});
    std::memcpy(data.data() + 20, words.data(), 20);
    AtaSerial serial;
    std::memset(serial, 0x7F, sizeof(serial));
    copySerial(data, serial);
    return serial;
}

TEST(AtaSerial, HasTheCharactersOfEachWordSwapped) {
    EXPECT_EQ(serialOf("BADCFEHGJILKNMPORQTS"), "ABCDEFGHIJKLMNOPQRST");
}

TEST(AtaSerial, KeepsTheBlanksAroundIt) {
    EXPECT_EQ(serialOf("    -W0121          "), "    W-1012          ");
    EXPECT_EQ(serialOf("                    "), "                    ");
}

TEST(AtaSerial, EndsAtAZero) {
    EXPECT_EQ(serialOf({"BADC\0EHGJILKNMPORQTS", 20}), "ABCDE");
    EXPECT_EQ(serialOf({"BADCE\0HGJILKNMPORQTS", 20}), "ABCD");
    EXPECT_EQ(serialOf(std::string(20, '\0')), "");
}

TEST(AtaSerial, KeepsBytesOfNoCharacter) {
    EXPECT_EQ(serialOf("\xFF\x80\x01\x02                "), "\x80\xFF\x02\x01                ");
}

}  // namespace
