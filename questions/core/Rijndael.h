#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kesta {

// The Rijndael block cipher with a block of Nb and a key of Nk 32-bit words
// (each 4, 6 or 8), plus the message framing every enciphered question line
// uses: a 4-byte little-endian length header, zero padding to whole 32-byte
// blocks, each block enciphered on its own (no chaining) under a 256-bit
// block and key. The question files only ever use Nb = Nk = 8; this is not
// AES, whose block is fixed at 128 bits.
//
// The 256-bit block runs on the processor's AES instructions where present
// (each handles half a block). The round tables are computed once per
// process and shared. A caller that deciphers many messages under one key
// sets it once with frameKey and then unframes each message in place.
//
// Throws RuntimeError: gkey raises 5 (invalid call) for an unsupported size
// and 9 (subscript out of range) for a key shorter than 4·nk bytes;
// Encrypt/Decrypt raise 5 before any gkey and 9 for a buffer shorter than
// one block; DecryptData raises 9 when the deciphered length header is zero
// or negative. Malformed sizes otherwise give an empty result silently.
class CRijndael {
public:
    using Bytes = std::vector<std::uint8_t>;

    CRijndael();

    // Binds the shared exponent, logarithm, S-box and round tables.
    void gentables();
    // Expands KEY (its first 4·nk bytes) for a block of nb words.
    void gkey(std::int32_t nb, std::int32_t nk, std::span<const std::uint8_t> KEY);
    // Enciphers the first 4·Nb bytes of buff in place.
    void Encrypt(std::span<std::uint8_t> buff) const;
    // Deciphers the first 4·Nb bytes of buff in place.
    void Decrypt(std::span<std::uint8_t> buff) const;

    // Frames and enciphers a message; empty when either argument is empty.
    Bytes EncryptData(std::span<const std::uint8_t> bytMessage, std::span<const std::uint8_t> bytPassword);
    // Deciphers and unframes a message; empty for an empty argument, a byte
    // count that is not a multiple of 32, or a header longer than the data.
    Bytes DecryptData(std::span<const std::uint8_t> bytIn, std::span<const std::uint8_t> bytPassword);

    // Cuts or zero-pads the password to the framing's 32-byte key and expands it.
    void frameKey(std::span<const std::uint8_t> bytPassword);
    // Deciphers a framed message of whole 32-byte blocks in place under the
    // key of the last frameKey, and returns the message within `work`: empty
    // when the header is longer than the data.
    std::span<std::uint8_t> unframe(std::span<std::uint8_t> work) const;

    // Lets the 256-bit block use the processor's AES instructions (the
    // default) or not; returns whether the processor has them. The results
    // are the same either way; tests run the vectors on both.
    static bool allowHardware(bool allowed);

    static constexpr std::size_t MaxScheduleWords = 120; // 8 words x 15 round keys
    static constexpr std::size_t FrameBlock = 32;        // block size of the message framing
    static constexpr std::size_t FrameKey = 32;          // key size of the message framing

    struct Tables;

private:
    const Tables* tables_ = nullptr;
    std::int32_t Nb_ = 0;
    std::int32_t Nk_ = 0;
    std::int32_t Nr_ = 0;
    std::array<std::uint32_t, MaxScheduleWords> fkey_{}; // encryption round keys
    std::array<std::uint32_t, MaxScheduleWords> rkey_{}; // equivalent inverse cipher round keys
};

} // namespace kesta
