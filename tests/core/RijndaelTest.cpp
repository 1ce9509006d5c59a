#include "questions/core/Rijndael.h"

#include "common/core/RuntimeError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
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

Bytes bytesOf(const std::string& text)
{
    return Bytes(text.begin(), text.end());
}

// One published vector: its name and fields (key, plain, cipher, ...) as hex.
struct Vector {
    std::string name;
    std::map<std::string, std::string> fields;
};

// Reads the NESSIE vector file: "Set s, vector# n:" opens a vector, "name=HEX"
// starts a field and a line of bare hex continues the last one.
std::vector<Vector> readNessieVectors()
{
    std::ifstream in(std::string(KESTA_TESTDATA_DIR) + "/rijndael-256-256-nessie.txt");
    std::vector<Vector> vectors;
    std::string line;
    std::string* field = nullptr;
    while (std::getline(in, line)) {
        const auto first = line.find_first_not_of(' ');
        if (first == std::string::npos) {
            field = nullptr;
            continue;
        }
        const std::string body = line.substr(first);
        if (body.rfind("Set ", 0) == 0) {
            vectors.push_back({body, {}});
            field = nullptr;
        } else if (const auto eq = body.find('='); eq != std::string::npos && !vectors.empty()) {
            field = &vectors.back().fields[body.substr(0, eq)];
            *field = body.substr(eq + 1);
        } else if (field != nullptr && body.find_first_not_of("0123456789ABCDEF") == std::string::npos) {
            *field += body;
        } else {
            field = nullptr;
        }
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

void checkVectors(const std::vector<Vector>& vectors);

// Runs a test body on the portable tables and, where the processor has
// them, on its AES instructions.
template <typename Body>
void onEveryEngine(Body&& body)
{
    for (const bool hardware : {false, true}) {
        SCOPED_TRACE(hardware ? "AES instructions" : "round tables");
        const bool present = CRijndael::allowHardware(hardware);
        if (hardware && !present)
            continue;
        body();
    }
    CRijndael::allowHardware(true);
}

TEST(RijndaelTest, AgreesWithEveryPublishedVectorInBothDirections)
{
    const std::vector<Vector> vectors = readNessieVectors();
    ASSERT_EQ(vectors.size(), 1540u) << "the vector file was not parsed completely";
    onEveryEngine([&] { checkVectors(vectors); });
}

TEST(RijndaelTest, EnginesAgreeOnMessages)
{
    const Bytes key = bytesOf("engines");
    for (std::size_t length = 1; length < 200; length += 13) {
        Bytes message(length);
        for (std::size_t i = 0; i < length; ++i)
            message[i] = static_cast<std::uint8_t>(i * 13 + 7);
        CRijndael::allowHardware(false);
        const Bytes portable = CRijndael().EncryptData(message, key);
        CRijndael::allowHardware(true);
        EXPECT_EQ(CRijndael().EncryptData(message, key), portable);
        EXPECT_EQ(CRijndael().DecryptData(portable, key), message);
    }
}

void checkVectors(const std::vector<Vector>& vectors)
{
    for (const Vector& v : vectors) {
        SCOPED_TRACE(v.name);
        const CRijndael cipher = keyed(fromHex(v.fields.at("key")));
        const Bytes plain = fromHex(v.fields.at("plain"));
        const Bytes expected = fromHex(v.fields.at("cipher"));
        ASSERT_EQ(plain.size(), 32u);
        ASSERT_EQ(expected.size(), 32u);

        Bytes block = plain;
        cipher.Encrypt(block);
        EXPECT_EQ(block, expected);
        cipher.Decrypt(block);
        EXPECT_EQ(block, plain);

        for (const auto& [label, iterations] : {std::pair{"Iterated 100 times", 100}, {"Iterated 1000 times", 1000}}) {
            const auto it = v.fields.find(label);
            if (it == v.fields.end())
                continue;
            Bytes iterated = plain;
            for (int k = 0; k < iterations; ++k)
                cipher.Encrypt(iterated);
            EXPECT_EQ(iterated, fromHex(it->second)) << label;
        }
    }
}

// The 128-bit block with the three key sizes is AES (FIPS-197, appendix C).
TEST(RijndaelTest, SmallerBlockAndKeySizesMatchAes)
{
    const Bytes plain = fromHex("00112233445566778899aabbccddeeff");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"000102030405060708090a0b0c0d0e0f", "69c4e0d86a7b0430d8cdb78070b4c55a"},
        {"000102030405060708090a0b0c0d0e0f1011121314151617", "dda97ca4864cdfe06eaf70a0ec0d7191"},
        {"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f", "8ea2b7ca516745bfeafc49904b496089"},
    };
    for (const auto& [key, cipherText] : cases) {
        SCOPED_TRACE(key);
        const CRijndael cipher = keyed(fromHex(key), 4);
        Bytes block = plain;
        cipher.Encrypt(block);
        EXPECT_EQ(block, fromHex(cipherText));
        cipher.Decrypt(block);
        EXPECT_EQ(block, plain);
    }
}

TEST(RijndaelTest, EveryBlockAndKeySizeDecryptsWhatItEncrypts)
{
    Bytes key(32);
    for (std::size_t i = 0; i < key.size(); ++i)
        key[i] = static_cast<std::uint8_t>(i * 7 + 1);
    for (const int nb : {4, 6, 8}) {
        for (const int nk : {4, 6, 8}) {
            SCOPED_TRACE(std::to_string(nb) + "x" + std::to_string(nk));
            CRijndael cipher;
            cipher.gkey(nb, nk, key);
            Bytes block(static_cast<std::size_t>(4 * nb));
            for (std::size_t i = 0; i < block.size(); ++i)
                block[i] = static_cast<std::uint8_t>(255 - i);
            const Bytes plain = block;
            cipher.Encrypt(block);
            EXPECT_NE(block, plain);
            cipher.Decrypt(block);
            EXPECT_EQ(block, plain);
        }
    }
}

TEST(RijndaelTest, MisuseRaisesRunTimeErrors)
{
    const Bytes key(32, 1);
    const std::vector<std::pair<int, std::function<void()>>> cases = {
        {err::InvalidCall, [&] { CRijndael().gkey(5, 8, key); }},
        {err::InvalidCall, [&] { CRijndael().gkey(8, 7, key); }},
        {err::SubscriptOutOfRange, [&] { CRijndael().gkey(8, 8, Bytes(31)); }},
        {err::InvalidCall, [&] { Bytes block(32); CRijndael().Decrypt(block); }},
        {err::SubscriptOutOfRange, [&] { Bytes block(31); keyed(key).Encrypt(block); }},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        try {
            cases[i].second();
            ADD_FAILURE() << "case " << i << " did not raise";
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.number(), cases[i].first) << "case " << i;
        }
    }
}

// --- the message framing ---

const Bytes password = bytesOf("pass phrase for the framing tests, longer than 32");

// Enciphers raw 32-byte blocks (header included) under the framing key.
Bytes encipherBlocks(Bytes blocks, const Bytes& pass = password)
{
    Bytes key(32, 0);
    std::copy_n(pass.begin(), std::min<std::size_t>(pass.size(), 32), key.begin());
    const CRijndael cipher = keyed(key);
    for (std::size_t p = 0; p < blocks.size(); p += 32)
        cipher.Encrypt(std::span(blocks).subspan(p, 32));
    return blocks;
}

Bytes blockWithHeader(std::int32_t header, std::size_t size = 32, std::uint8_t fill = 0x41)
{
    Bytes block(size, fill);
    for (int i = 0; i < 4; ++i)
        block[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(header) >> (8 * i));
    return block;
}

TEST(RijndaelTest, InputThatIsNoWholeNumberOfBlocksGivesNothing)
{
    const Bytes valid = CRijndael().EncryptData(bytesOf("message"), password);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{31}, std::size_t{33}, std::size_t{63}}) {
        Bytes input = valid;
        input.resize(size, 0);
        EXPECT_TRUE(CRijndael().DecryptData(input, password).empty()) << size;
    }
    EXPECT_TRUE(CRijndael().DecryptData(valid, Bytes{}).empty());
    EXPECT_TRUE(CRijndael().EncryptData(Bytes{}, password).empty());
    EXPECT_TRUE(CRijndael().EncryptData(bytesOf("x"), Bytes{}).empty());
}

TEST(RijndaelTest, PasswordIsCutAtAndPaddedTo32Bytes)
{
    const Bytes message = bytesOf("a message");
    Bytes longer = password;
    longer.resize(40);
    Bytes otherTail = longer;
    for (std::size_t i = 32; i < 40; ++i)
        otherTail[i] ^= 0xFF;
    EXPECT_EQ(CRijndael().EncryptData(message, longer), CRijndael().EncryptData(message, otherTail));

    const Bytes shortPass = bytesOf("ab");
    Bytes zeroPadded = shortPass;
    zeroPadded.resize(32, 0);
    EXPECT_EQ(CRijndael().EncryptData(message, shortPass), CRijndael().EncryptData(message, zeroPadded));
    EXPECT_NE(CRijndael().EncryptData(message, shortPass), CRijndael().EncryptData(message, longer));
}

TEST(RijndaelTest, EncryptDataWritesHeaderMessageAndZeroPadding)
{
    for (const std::size_t length : {std::size_t{1}, std::size_t{27}, std::size_t{28}, std::size_t{29}, std::size_t{60}}) {
        SCOPED_TRACE(length);
        const Bytes message(length, 0x5A);
        const Bytes cipher = CRijndael().EncryptData(message, password);
        ASSERT_EQ(cipher.size(), (length + 4 + 31) / 32 * 32);
        Bytes expected = blockWithHeader(static_cast<std::int32_t>(length), cipher.size(), 0);
        std::fill_n(expected.begin() + 4, length, 0x5A);
        EXPECT_EQ(cipher, encipherBlocks(expected));
    }
}

TEST(RijndaelTest, LengthHeaderDecidesTheResult)
{
    // Header n - 4: every byte after it; n - 3: nothing; trailing padding is dropped whatever it holds.
    EXPECT_EQ(CRijndael().DecryptData(encipherBlocks(blockWithHeader(60, 64)), password), Bytes(60, 0x41));
    EXPECT_TRUE(CRijndael().DecryptData(encipherBlocks(blockWithHeader(61, 64)), password).empty());
    EXPECT_TRUE(CRijndael().DecryptData(encipherBlocks(blockWithHeader(0x7FFFFFFF)), password).empty());
    EXPECT_EQ(CRijndael().DecryptData(encipherBlocks(blockWithHeader(3, 32, 0xEE)), password), Bytes(3, 0xEE));

    for (const std::int32_t header : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        try {
            CRijndael().DecryptData(encipherBlocks(blockWithHeader(header)), password);
            ADD_FAILURE() << "header " << header << " did not raise";
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.number(), err::SubscriptOutOfRange);
        }
    }
}

TEST(RijndaelTest, BlocksAreIndependent)
{
    // Equal plaintext blocks encipher to equal cipher blocks ...
    const Bytes cipher = CRijndael().EncryptData(Bytes(92, 0x33), password);
    ASSERT_EQ(cipher.size(), 96u);
    EXPECT_TRUE(std::equal(cipher.begin() + 32, cipher.begin() + 64, cipher.begin() + 64));

    // ... and equal cipher blocks decipher to equal plaintext: the result's
    // bytes 28.. are the first block's bytes again, its header included.
    const Bytes block = blockWithHeader(40, 32, 0x10);
    Bytes tripled = encipherBlocks(block);
    tripled.insert(tripled.end(), tripled.begin(), tripled.end());
    tripled.insert(tripled.end(), tripled.begin(), tripled.begin() + 32);
    const Bytes plain = CRijndael().DecryptData(tripled, password);
    ASSERT_EQ(plain.size(), 40u);
    EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + 28, block.begin() + 4));
    EXPECT_TRUE(std::equal(plain.begin() + 28, plain.end(), block.begin()));
}

TEST(RijndaelTest, DecryptDataReversesEncryptData)
{
    const Bytes shortPass = bytesOf("k");
    for (std::size_t length = 1; length <= 100; ++length) {
        Bytes message(length);
        for (std::size_t i = 0; i < length; ++i)
            message[i] = static_cast<std::uint8_t>(i * 31 + length);
        for (const Bytes* pass : {&password, &shortPass})
            EXPECT_EQ(CRijndael().DecryptData(CRijndael().EncryptData(message, *pass), *pass), message) << length;
    }
}

TEST(RijndaelTest, CachedKeyScheduleFollowsTheKey)
{
    // Alternating keys must not let one key's cached schedule serve the other.
    const Bytes other = bytesOf("another pass phrase");
    const Bytes a1 = CRijndael().EncryptData(bytesOf("same text"), password);
    const Bytes b1 = CRijndael().EncryptData(bytesOf("same text"), other);
    const Bytes a2 = CRijndael().EncryptData(bytesOf("same text"), password);
    EXPECT_NE(a1, b1);
    EXPECT_EQ(a1, a2);
    EXPECT_EQ(CRijndael().DecryptData(b1, other), bytesOf("same text"));
}

} // namespace
} // namespace kesta
