// The platform's Base64 codec, checked against coreutils' base64 run as a child process.
#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zo/Base64.h"

namespace {

typedef std::vector<unsigned char> Bytes;

// coreutils' encoding of `bytes` (lines of 76 characters, each ending in a line feed).
bool coreutilsEncode(const Bytes& bytes, std::string& text) {
    char path[] = "/tmp/sysctrl-base64.XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0) {
        return false;
    }
    const bool written =
        write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    close(fd);
    FILE* child = written ? popen((std::string("base64 ") + path).c_str(), "r") : nullptr;
    text.clear();
    char buffer[4096];
    size_t count = 0;
    while (child != nullptr && (count = fread(buffer, 1, sizeof buffer, child)) > 0) {
        text.append(buffer, count);
    }
    const bool ran = child != nullptr && pclose(child) == 0;
    unlink(path);
    return ran;
}

int decode(const std::string& text, Bytes& bytes) {
    unsigned char sentinel = 0;
    unsigned char* out = &sentinel;  // the codec must replace it
    const int length = zo::base64::decode(text.data(), text.size(), &out);
    EXPECT_NE(out, &sentinel) << text;
    if (length < 0) {
        EXPECT_EQ(out, nullptr) << text;
    }
    if (out == &sentinel) {
        return length;
    }
    bytes.assign(out, out + std::max(length, 0));
    zo::base64::release(out);
    return length;
}

std::string encode(const Bytes& bytes) {
    char* text = nullptr;
    const int length = zo::base64::encode(bytes.data(), bytes.size(), &text);
    EXPECT_GE(length, 0);
    EXPECT_EQ(std::strlen(text), static_cast<size_t>(length));
    const std::string result(text, static_cast<size_t>(length));
    zo::base64::release(text);
    return result;
}

TEST(Base64, RoundTripsRandomBytesAsCoreutilsDoes) {
    std::mt19937 random(20240611);
    std::vector<size_t> lengths;
    for (size_t length = 0; length <= 160; ++length) {
        lengths.push_back(length);
    }
    lengths.insert(lengths.end(), {511, 512, 513, 4095, 65537});
    for (const size_t length : lengths) {
        Bytes bytes(length);
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        std::string wrapped;
        ASSERT_TRUE(coreutilsEncode(bytes, wrapped)) << length;
        std::string flat = wrapped;
        flat.erase(std::remove(flat.begin(), flat.end(), '\n'), flat.end());

        EXPECT_EQ(encode(bytes), flat) << length;
        Bytes decoded;
        EXPECT_EQ(decode(wrapped, decoded), static_cast<int>(length));
        EXPECT_EQ(decoded, bytes) << length;
    }
}

struct DecodeCase {
    std::string text;
    int length;  // negative: malformed
    std::string bytes;
};

void PrintTo(const DecodeCase& c, std::ostream* os) {
    *os << ::testing::PrintToString(c.text);
}

class Base64Decode : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(Base64Decode, SkipsBlanksAndRefusesMalformedText) {
    Bytes bytes;
    EXPECT_EQ(decode(GetParam().text, bytes), GetParam().length);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Base64Decode,
    ::testing::Values(
        DecodeCase{"", 0, ""}, DecodeCase{" \t\r\n", 0, ""}, DecodeCase{"QQ==", 1, "A"},
        DecodeCase{"QUI=", 2, "AB"}, DecodeCase{"QUJD", 3, "ABC"},
        DecodeCase{" Q U\nJ\tD\r\n", 3, "ABC"}, DecodeCase{"QQ= =\n", 1, "A"},
        DecodeCase{"QUJDQQ==", 4, "ABCA"}, DecodeCase{"A", -1, ""}, DecodeCase{"QUJ", -1, ""},
        DecodeCase{"QQ=", -1, ""}, DecodeCase{"Q===", -1, ""}, DecodeCase{"====", -1, ""},
        DecodeCase{"QQ==QQ==", -1, ""}, DecodeCase{"QU=I", -1, ""}, DecodeCase{"QUJD=", -1, ""},
        DecodeCase{"QUJ*", -1, ""}, DecodeCase{"QUJ-", -1, ""}, DecodeCase{"QUJ_", -1, ""},
        DecodeCase{std::string("QU\0D", 4), -1, ""}, DecodeCase{"QUJ\xc3\xa9", -1, ""}));

TEST(Base64, RefusesNullArguments) {
    unsigned char* bytes = nullptr;
    EXPECT_LT(zo::base64::decode(nullptr, 4, &bytes), 0);
    EXPECT_LT(zo::base64::decode("QQ==", 4, nullptr), 0);
    char* text = nullptr;
    EXPECT_LT(zo::base64::encode(nullptr, 3, &text), 0);
    EXPECT_EQ(text, nullptr);
    EXPECT_LT(zo::base64::encode(reinterpret_cast<const unsigned char*>("a"), 1, nullptr), 0);
}

}  // namespace
