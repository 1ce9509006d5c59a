#include "questions/core/Rijndael.h"

#include "support/Checks.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <map>

namespace kesta {
namespace {

using Bytes = CRijndael::Bytes;
using test::errorOf;

Bytes fromHex(const std::string& hex)
{
    Bytes out;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        out.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

CRijndael keyed(const Bytes& key, int nb = 8)
{
    CRijndael cipher;
    cipher.gentables();
    cipher.gkey(nb, static_cast<std::int32_t>(key.size() / 4), key);
    return cipher;
}

// The NESSIE vectors: "Set s, vector# n:" opens one, "name=HEX" holds a field
// whose second half is on the next line.
std::vector<std::map<std::string, std::string>> nessieVectors()
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

// Every vector on the default engine, every 16th on the round tables alone; the iterated values on a few.
TEST(RijndaelTest, AgreesWithThePublishedVectorsOnBothEngines)
{
    auto vectors = nessieVectors();
    ASSERT_EQ(vectors.size(), 1540u);
    for (const bool hardware : {true, false}) {
        CRijndael::allowHardware(hardware);
        for (std::size_t i = 0; i < vectors.size(); i += hardware ? 1 : 16) {
            auto& v = vectors[i];
            SCOPED_TRACE(v["name"]);
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

// Sizes other than the three, short keys and blocks, and a cipher without a key raise.
TEST(RijndaelTest, MisuseRaises)
{
    const std::string key = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";
    Bytes block(32), shortBlock(31);
    CRijndael unkeyed;
    unkeyed.gentables();
    EXPECT_EQ(std::vector<int>({errorOf([&] { CRijndael().gkey(5, 8, block); }), errorOf([&] { CRijndael().gkey(8, 7, block); }),
                                errorOf([&] { CRijndael().gkey(8, 8, shortBlock); }), errorOf([&] { CRijndael().Decrypt(block); }),
                                errorOf([&] { unkeyed.Encrypt(block); }), errorOf([&] { keyed(block).Encrypt(shortBlock); }),
                                errorOf([&] { keyed(block).Decrypt(shortBlock); }),
                                errorOf([&] { CRijndael fresh; fresh.gkey(8, 8, block); fresh.Encrypt(block); })}),
              std::vector<int>({5, 5, 9, 5, 5, 9, 9, 0}));
}

// --- the message framing: a 4-byte length, the message, zero padding to whole blocks ---

const Bytes password = fromHex(std::string(80, '7') + "01"); // 41 bytes: cut at 32

// A 4-byte header, `fill` up to byte `end` and zeros after it, enciphered block by block under the framing key.
Bytes framed(std::int32_t header, std::size_t size, std::uint8_t fill, std::size_t end = SIZE_MAX)
{
    Bytes blocks(size, 0);
    std::fill(blocks.begin() + 4, blocks.begin() + static_cast<std::ptrdiff_t>(std::min(end, size)), fill);
    for (std::size_t i = 0; i < 4; ++i)
        blocks[i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(header) >> (8 * i));
    const CRijndael cipher = keyed(Bytes(password.begin(), password.begin() + 32));
    for (std::size_t p = 0; p < blocks.size(); p += 32)
        cipher.Encrypt(std::span(blocks).subspan(p, 32));
    return blocks;
}

std::string decrypt(const Bytes& cipher, const Bytes& pass = password)
{
    return test::outcome([&] {
        const Bytes message = CRijndael().DecryptData(cipher, pass);
        return std::string(message.begin(), message.end());
    });
}

TEST(RijndaelTest, FramingWritesHeaderMessageAndPaddingAndTheHeaderAndKeyDecideWhatComesBack)
{
    for (const std::size_t length : {1u, 27u, 28u, 29u, 60u}) {
        EXPECT_EQ(CRijndael().EncryptData(Bytes(length, 0x5A), password),
                  framed(static_cast<std::int32_t>(length), (length + 4 + 31) / 32 * 32, 0x5A, 4 + length));
    }
    // A header up to the data's end gives the bytes after it, padding dropped whatever it holds; equal
    // blocks decipher alike (no chaining), so a long header runs on into the second block's header.
    Bytes twice = framed(40, 32, 0x10);
    const Bytes second = twice;
    twice.insert(twice.end(), second.begin(), second.end());
    const std::pair<Bytes, std::string> cases[] = {
        {framed(60, 64, 0x41), std::string(60, 'A')}, {framed(3, 32, 0xEE), "\xEE\xEE\xEE"},
        {twice, std::string(28, '\x10') + "(" + std::string(3, '\0') + std::string(8, '\x10')},
        {framed(61, 64, 0x41), ""}, {framed(std::numeric_limits<std::int32_t>::max(), 32, 0), ""},
        {framed(0, 32, 0), "error 9"}, {framed(-1, 32, 0), "error 9"},
        {framed(std::numeric_limits<std::int32_t>::min(), 32, 0), "error 9"}};
    for (const auto& [cipher, expected] : cases)
        EXPECT_EQ(decrypt(cipher), expected);

    // The key is cut at 32 bytes or zero-padded; partial blocks or no password give nothing.
    const Bytes message = fromHex("6d657373616765");
    Bytes otherTail = password, padded = fromHex("6162");
    otherTail[40] ^= 0xFF;
    padded.resize(32, 0);
    const Bytes valid = CRijndael().EncryptData(message, password);
    EXPECT_EQ(CRijndael().EncryptData(message, otherTail), valid);
    EXPECT_EQ(CRijndael().EncryptData(message, fromHex("6162")), CRijndael().EncryptData(message, padded));
    EXPECT_EQ(decrypt(valid, otherTail) + "|" + decrypt(valid, {}), "message|");
    EXPECT_TRUE(CRijndael().EncryptData(Bytes{}, password).empty() && CRijndael().EncryptData(message, Bytes{}).empty());
    for (const std::size_t size : {0u, 31u, 33u, 63u}) {
        Bytes input = valid;
        input.resize(size, 0);
        EXPECT_EQ(decrypt(input), "") << size;
    }
    // Both engines frame alike, whatever number of blocks a message takes.
    for (std::size_t length = 1; length <= 200; length += 41) {
        const Bytes long_(length, static_cast<std::uint8_t>(length));
        CRijndael::allowHardware(false);
        const Bytes portable = CRijndael().EncryptData(long_, password);
        const std::string back = decrypt(portable);
        CRijndael::allowHardware(true);
        EXPECT_EQ(CRijndael().EncryptData(long_, password), portable);
        EXPECT_EQ(back, std::string(long_.begin(), long_.end()));
    }
}

} // namespace
} // namespace kesta
