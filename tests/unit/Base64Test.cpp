// The platform's Base64 codec, checked against coreutils' base64 run as a child process.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "TempFolder.h"
#include "zo/Base64.h"

namespace {

// coreutils' encoding of `bytes` (lines of 76 characters, each ending in a line feed).
std::string coreutilsEncode(const std::string& bytes) {
    std::string pattern = sysctrltest::temporaryBase() + "/sysctrl-base64.XXXXXX";
    char* path = &pattern[0];
    close(mkstemp(path));
    std::ofstream(path, std::ios::binary) << bytes;
    const std::string encoded = std::string(path) + ".b64";
    EXPECT_EQ(std::system(("base64 " + std::string(path) + " >" + encoded).c_str()), 0);
    std::ifstream in(encoded, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    unlink(path);
    unlink(encoded.c_str());
    return text;
}

// Decodes `text` into `bytes`; returns the codec's result.
int decode(const std::string& text, std::string& bytes) {
    unsigned char sentinel = 0;
    unsigned char* out = &sentinel;  // the codec must replace it, with null when it fails
    const int length = zo::base64::decode(text.data(), text.size(), &out);
    EXPECT_TRUE(length >= 0 ? out != &sentinel : out == nullptr) << text;
    bytes.assign(length > 0 ? reinterpret_cast<char*>(out) : "", std::max(length, 0));
    zo::base64::release(out != &sentinel ? out : nullptr);
    return length;
}

TEST(Base64, RoundTripsRandomBytesAsCoreutilsDoes) {
    std::mt19937 random(20240611);
    // Every length up to 160, then a few around the UART's read buffer and larger.
    const size_t kLarger[] = {511, 512, 513, 4095, 65537};
    for (size_t step = 0; step <= 165; ++step) {
        const size_t length = step <= 160 ? step : kLarger[step - 161];
        std::string bytes(length, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        const std::string wrapped = coreutilsEncode(bytes);
        std::string flat = wrapped;
        flat.erase(std::remove(flat.begin(), flat.end(), '\n'), flat.end());

        char* text = nullptr;
        EXPECT_EQ(zo::base64::encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                                     bytes.size(), &text),
                  static_cast<int>(flat.size()));
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text, flat) << length;  // NUL-terminated
        zo::base64::release(text);
        std::string decoded;
        EXPECT_EQ(decode(wrapped, decoded), static_cast<int>(length));
        EXPECT_EQ(decoded, bytes) << length;
    }
}

TEST(Base64, SkipsBlanksAndRefusesMalformedText) {
    const std::pair<std::string, std::string> valid[] = {
        {"", ""},        {" \t\r\n", ""},           {"QQ==", "A"},    {"QUI=", "AB"},
        {"QUJD", "ABC"}, {" Q U\nJ\tD\r\n", "ABC"}, {"QQ= =\n", "A"}, {"QUJDQQ==", "ABCA"}};
    for (const auto& [text, bytes] : valid) {
        std::string decoded;
        EXPECT_EQ(decode(text, decoded), static_cast<int>(bytes.size())) << text;
        EXPECT_EQ(decoded, bytes) << ::testing::PrintToString(text);
    }
    const std::string malformed[] = {
        "A",     "QUJ",  "QQ=",  "Q===", "====",        "QQ==QQ==",  "QU=I",
        "QUJD=", "QUJ*", "QUJ-", "QUJ_", "QUJ\xc3\xa9", {"QU\0D", 4}};
    for (const std::string& text : malformed) {
        std::string decoded;
        EXPECT_LT(decode(text, decoded), 0) << ::testing::PrintToString(text);
    }
}

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
