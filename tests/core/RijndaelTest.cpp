#include "questions/core/Rijndael.h"

#include "common/core/RuntimeError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace kesta {
namespace {

using Bytes = CRijndael::Bytes;

Bytes fromHex(const std::string& hex)
{
    Bytes out;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        out.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

// Matches a call that raises the run-time error `number`.
auto raises(int number)
{
    return ::testing::Throws<RuntimeError>(::testing::Property(&RuntimeError::number, number));
}

// The NESSIE file: "Set s, vector# n:" opens a vector, "name=HEX" holds a field
// whose second half is on the next line.
std::vector<std::map<std::string, std::string>> readNessieVectors()
{
    std::ifstream in(std::string(KESTA_TESTDATA_DIR) + "/rijndael-256-256-nessie.txt");
    std::vector<std::map<std::string, std::string>> vectors;
    std::string line, more;
    while (std::getline(in >> std::ws, line)) {
        const auto eq = line.find('=');
        if (line.rfind("Set ", 0) == 0)
            vectors.push_back({{"name", line}});
        else if (eq != std::string::npos && eq > 0 && !vectors.empty() && std::getline(in >> std::ws, more))
            vectors.back()[line.substr(0, eq)] = line.substr(eq + 1) + more;
    }
    return vectors;
}

CRijndael keyed(const Bytes& key, int nb = 8)
{
    CRijndael cipher;
    cipher.gentables();
    cipher.gkey(nb, static_cast<std::int32_t>(key.size() / 4), key);
    return cipher;
}

// Every vector on the default engine, every 16th on the round tables; the iterated values on a handful.
TEST(RijndaelTest, AgreesWithThePublishedVectorsInBothDirections)
{
    auto vectors = readNessieVectors();
    ASSERT_EQ(vectors.size(), 1540u) << "the vector file was not parsed completely";
    for (const bool hardware : {true, false}) {
        CRijndael::allowHardware(hardware);
        for (std::size_t i = 0; i < vectors.size(); i += hardware ? 1 : 16) {
            auto& v = vectors[i];
            SCOPED_TRACE(v["name"] + (hardware ? " (default engine)" : " (round tables)"));
            const CRijndael cipher = keyed(fromHex(v["key"]));
            Bytes block = fromHex(v["plain"]);
            cipher.Encrypt(block);
            EXPECT_EQ(block, fromHex(v["cipher"]));
            cipher.Decrypt(block);
            EXPECT_EQ(block, fromHex(v["plain"]));
            for (int k = 1; i % 192 == 0 && v.contains("Iterated 1000 times") && k <= 1000; ++k) {
                cipher.Encrypt(block);
                if (k == 100 || k == 1000) {
                    EXPECT_EQ(block, fromHex(v["Iterated " + std::to_string(k) + " times"]));
                }
            }
        }
    }
    CRijndael::allowHardware(true);
}

// The 128-bit block is AES (FIPS-197, appendix C).
TEST(RijndaelTest, The128BitBlockWithEachKeySizeIsAes)
{
    const Bytes plain = fromHex("00112233445566778899aabbccddeeff");
    const std::string key = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";
    for (const auto& [nk, expected] : {std::pair{4, "69c4e0d86a7b0430d8cdb78070b4c55a"},
                                       {6, "dda97ca4864cdfe06eaf70a0ec0d7191"}, {8, "8ea2b7ca516745bfeafc49904b496089"}}) {
        const CRijndael cipher = keyed(fromHex(key.substr(0, static_cast<std::size_t>(8 * nk))), 4);
        Bytes block = plain;
        cipher.Encrypt(block);
        EXPECT_EQ(block, fromHex(expected));
        cipher.Decrypt(block);
        EXPECT_EQ(block, plain);
    }
}

TEST(RijndaelTest, MisuseRaisesRunTimeErrors)
{
    const Bytes key(32, 1);
    Bytes block(32), shortBlock(31);
    EXPECT_THAT([&] { CRijndael().gkey(5, 8, key); }, raises(err::InvalidCall));
    EXPECT_THAT([&] { CRijndael().gkey(8, 7, key); }, raises(err::InvalidCall));
    EXPECT_THAT([&] { CRijndael().gkey(8, 8, Bytes(31)); }, raises(err::SubscriptOutOfRange));
    EXPECT_THAT([&] { CRijndael().Decrypt(block); }, raises(err::InvalidCall));
    EXPECT_THAT([&] { keyed(key).Encrypt(shortBlock); }, raises(err::SubscriptOutOfRange));
}

// --- the message framing ---

const Bytes password = bytesOf("pass phrase for the framing tests, longer than 32");

// Enciphers raw 32-byte blocks (header included) under the framing key.
Bytes encipherBlocks(Bytes blocks)
{
    Bytes key(32, 0);
    std::copy_n(password.begin(), 32, key.begin());
    const CRijndael cipher = keyed(key);
    for (std::size_t p = 0; p < blocks.size(); p += 32)
        cipher.Encrypt(std::span(blocks).subspan(p, 32));
    return blocks;
}

Bytes blockWithHeader(std::int32_t header, std::size_t size = 32, std::uint8_t fill = 0x41)
{
    Bytes block(size, fill);
    for (std::size_t i = 0; i < 4; ++i)
        block[i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(header) >> (8 * i));
    return block;
}

Bytes decrypt(const Bytes& cipher, const Bytes& pass = password) { return CRijndael().DecryptData(cipher, pass); }

TEST(RijndaelTest, KeyIsCutAt32BytesAndZeroPaddedAndPartialBlocksGiveNothing)
{
    const Bytes message = bytesOf("a message");
    Bytes otherTail = password, zeroPadded = bytesOf("ab");
    otherTail[40] ^= 0xFF;
    zeroPadded.resize(32, 0);
    EXPECT_EQ(CRijndael().EncryptData(message, password), CRijndael().EncryptData(message, otherTail));
    EXPECT_EQ(CRijndael().EncryptData(message, bytesOf("ab")), CRijndael().EncryptData(message, zeroPadded));

    const Bytes valid = CRijndael().EncryptData(message, password);
    EXPECT_TRUE(decrypt(valid, Bytes{}).empty());
    EXPECT_TRUE(CRijndael().EncryptData(Bytes{}, password).empty());
    EXPECT_TRUE(CRijndael().EncryptData(message, Bytes{}).empty());
    for (const std::size_t size : {0u, 1u, 31u, 33u, 63u}) {
        Bytes input = valid;
        input.resize(size, 0);
        EXPECT_TRUE(decrypt(input).empty()) << size;
    }
}

TEST(RijndaelTest, EncryptDataWritesHeaderMessageAndZeroPadding)
{
    for (const std::size_t length : {1u, 27u, 28u, 29u, 60u}) {
        SCOPED_TRACE(length);
        Bytes expected = blockWithHeader(static_cast<std::int32_t>(length), (length + 4 + 31) / 32 * 32, 0);
        std::fill_n(expected.begin() + 4, length, 0x5A);
        EXPECT_EQ(CRijndael().EncryptData(Bytes(length, 0x5A), password), encipherBlocks(expected));
    }
}

TEST(RijndaelTest, LengthHeaderDecidesTheResult)
{
    // n - 4: every byte after the header; n - 3: nothing; padding is dropped whatever it holds.
    EXPECT_EQ(decrypt(encipherBlocks(blockWithHeader(60, 64))), Bytes(60, 0x41));
    EXPECT_TRUE(decrypt(encipherBlocks(blockWithHeader(61, 64))).empty());
    EXPECT_TRUE(decrypt(encipherBlocks(blockWithHeader(0x7FFFFFFF))).empty());
    EXPECT_EQ(decrypt(encipherBlocks(blockWithHeader(3, 32, 0xEE))), Bytes(3, 0xEE));
    for (const std::int32_t header : {0, -1, std::numeric_limits<std::int32_t>::min()})
        EXPECT_THAT([&] { decrypt(encipherBlocks(blockWithHeader(header))); }, raises(err::SubscriptOutOfRange));
}

TEST(RijndaelTest, BlocksAreIndependent)
{
    const Bytes cipher = CRijndael().EncryptData(Bytes(92, 0x33), password);
    ASSERT_EQ(cipher.size(), 96u);
    EXPECT_TRUE(std::equal(cipher.begin() + 32, cipher.begin() + 64, cipher.begin() + 64));

    // Equal cipher blocks decipher alike: bytes 28.. are the first block again, header included.
    const Bytes block = blockWithHeader(40, 32, 0x10);
    const Bytes once = encipherBlocks(block);
    Bytes twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    const Bytes plain = decrypt(twice);
    ASSERT_EQ(plain.size(), 40u);
    EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + 28, block.begin() + 4));
    EXPECT_TRUE(std::equal(plain.begin() + 28, plain.end(), block.begin()));
}

TEST(RijndaelTest, RoundTripsOnBothEnginesAlike)
{
    const Bytes shortPass = bytesOf("k");
    for (std::size_t length = 1; length <= 200; length += 7) {
        Bytes message(length);
        for (std::size_t i = 0; i < length; ++i)
            message[i] = static_cast<std::uint8_t>(i * 31 + length);
        for (const Bytes* pass : {&password, &shortPass}) {
            CRijndael::allowHardware(false);
            const Bytes portable = CRijndael().EncryptData(message, *pass);
            CRijndael::allowHardware(true);
            EXPECT_EQ(CRijndael().EncryptData(message, *pass), portable) << length;
            EXPECT_EQ(decrypt(portable, *pass), message) << length;
        }
    }
    // Alternating keys must not let one key's cached schedule serve the other.
    const Bytes a = CRijndael().EncryptData(bytesOf("same"), password);
    EXPECT_NE(CRijndael().EncryptData(bytesOf("same"), shortPass), a);
    EXPECT_EQ(CRijndael().EncryptData(bytesOf("same"), password), a);
}

} // namespace
} // namespace kesta
