#include "questions/core/Rijndael.h"

#include "common/core/RuntimeError.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
#include <immintrin.h>
#endif

namespace kesta {

// The standard Rijndael tables. The round tables come in four byte
// rotations so that a round needs no rotation at all: table r holds the
// contribution of a byte in row r to its whole output column.
struct CRijndael::Tables {
    std::array<std::uint8_t, 256> ptab{};  // powers of 3 in GF(2^8)
    std::array<std::uint8_t, 256> ltab{};  // logarithms to base 3
    std::array<std::uint8_t, 256> fbsub{}; // S-box
    std::array<std::uint8_t, 256> rbsub{}; // inverse S-box
    std::array<std::array<std::uint32_t, 256>, 4> ftable{}; // SubBytes + MixColumns
    std::array<std::array<std::uint32_t, 256>, 4> rtable{}; // InvSubBytes + InvMixColumns
    std::array<std::uint8_t, 30> rco{};    // round constants

    Tables();
    std::uint8_t bmul(std::uint8_t c, std::uint8_t y) const; // c a non-zero constant
    std::uint32_t subWord(std::uint32_t a) const;
    std::uint32_t invMixColumn(std::uint32_t x) const;
};

namespace {

constexpr std::uint8_t xtime(std::uint8_t a)
{
    return static_cast<std::uint8_t>((a << 1) ^ ((a & 0x80) ? 0x1B : 0x00));
}

constexpr std::uint8_t rotl8(std::uint8_t x)
{
    return static_cast<std::uint8_t>((x << 1) | (x >> 7));
}

constexpr std::uint32_t rotl32(std::uint32_t x, int n)
{
    return (x << n) | (x >> (32 - n));
}

constexpr std::uint32_t pack(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2, std::uint8_t b3)
{
    return std::uint32_t{b0} | (std::uint32_t{b1} << 8) | (std::uint32_t{b2} << 16) | (std::uint32_t{b3} << 24);
}

constexpr std::uint8_t byteOf(std::uint32_t word, int n)
{
    return static_cast<std::uint8_t>(word >> (8 * n));
}

inline std::uint32_t load32(const std::uint8_t* p)
{
    return pack(p[0], p[1], p[2], p[3]);
}

inline void store32(std::uint8_t* p, std::uint32_t w)
{
    p[0] = byteOf(w, 0);
    p[1] = byteOf(w, 1);
    p[2] = byteOf(w, 2);
    p[3] = byteOf(w, 3);
}

const CRijndael::Tables& sharedTables()
{
    static const CRijndael::Tables tables;
    return tables;
}

// Row shift of row r (1..3) for a block of nb words.
constexpr int shiftOffset(int nb, int row)
{
    if (row == 1)
        return 1;
    if (nb >= 8)
        return row == 2 ? 3 : 4;
    return row;
}

// `Lanes` consecutive blocks through the cipher, their rounds interleaved:
// each round waits for the one before, and a second block fills that wait.
// `Forward` picks the round tables, S-box and the direction of the row
// shift; `rk` is the schedule for that direction.
template <int NB, bool Forward, int Lanes = 1>
void cipherBlock(const CRijndael::Tables& t, const std::uint32_t* rk, int rounds, std::uint8_t* buff)
{
    constexpr int s1 = Forward ? shiftOffset(NB, 1) : NB - shiftOffset(NB, 1);
    constexpr int s2 = Forward ? shiftOffset(NB, 2) : NB - shiftOffset(NB, 2);
    constexpr int s3 = Forward ? shiftOffset(NB, 3) : NB - shiftOffset(NB, 3);
    const auto& T = Forward ? t.ftable : t.rtable;
    const auto& S = Forward ? t.fbsub : t.rbsub;

    std::uint32_t a[Lanes][NB];
    std::uint32_t b[Lanes][NB];
    for (int l = 0; l < Lanes; ++l) {
        for (int j = 0; j < NB; ++j)
            a[l][j] = load32(buff + 4 * (NB * l + j)) ^ rk[j];
    }
    rk += NB;

    auto round = [&](std::uint32_t (*in)[NB], std::uint32_t (*out)[NB], const std::uint32_t* key) {
        // Rows 1 and 2 are read as bytes from memory: it spares the
        // shift-and-mask work, which is what limits a round.
        constexpr int row1 = std::endian::native == std::endian::little ? 1 : 2;
        constexpr int row2 = 3 - row1;
        for (int l = 0; l < Lanes; ++l) {
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(in[l]);
            for (int j = 0; j < NB; ++j) {
                out[l][j] = T[0][byteOf(in[l][j], 0)] ^ T[1][bytes[4 * ((j + s1) % NB) + row1]] ^
                            T[2][bytes[4 * ((j + s2) % NB) + row2]] ^ T[3][byteOf(in[l][(j + s3) % NB], 3)] ^ key[j];
            }
        }
    };
    // Rounds - 1 full rounds, alternating the two state arrays: an odd
    // number, as there are 10, 12 or 14 rounds, so the last full round is into `b`.
    for (int pair = 0; pair < rounds / 2 - 1; ++pair) {
        round(a, b, rk);
        round(b, a, rk + NB);
        rk += 2 * NB;
    }
    round(a, b, rk);
    rk += NB;
    std::uint32_t (*last)[NB] = b;
    for (int l = 0; l < Lanes; ++l) {
        for (int j = 0; j < NB; ++j) {
            const std::uint32_t* w = last[l];
            store32(buff + 4 * (NB * l + j), pack(S[byteOf(w[j], 0)], S[byteOf(w[(j + s1) % NB], 1)],
                                                  S[byteOf(w[(j + s2) % NB], 2)], S[byteOf(w[(j + s3) % NB], 3)]) ^
                                                 rk[j]);
        }
    }
}

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
#define KESTA_RIJNDAEL_AESNI 1

// The 256-bit block on the processor's AES instructions: each instruction
// works on a 128-bit half (four columns), so before every round the two
// halves are re-mixed so that the 128-bit row shift inside the instruction
// ends up as the 256-bit shift (rows by 1, 3 and 4 columns). The mixing
// masks are derived from the two shift rules, not written out by hand.
struct HalfMasks {
    // Byte i of half h comes from byte lo[h][i] of the low half or hi[h][i]
    // of the high half; 0x80 selects zero, so the two shuffles OR together.
    alignas(16) std::uint8_t lo[2][16];
    alignas(16) std::uint8_t hi[2][16];
};

HalfMasks makeHalfMasks(bool forward)
{
    HalfMasks m{};
    for (int h = 0; h < 2; ++h) {
        for (int col = 0; col < 4; ++col) {
            for (int row = 0; row < 4; ++row) {
                // The instruction's own row shift moves input byte (col, row)
                // to column outCol of its half; the 256-bit shift wants there
                // the byte of column srcCol of the whole block.
                const int outCol = forward ? (col - row + 4) % 4 : (col + row) % 4;
                const int shift = row == 0 ? 0 : shiftOffset(8, row);
                const int srcCol = forward ? (4 * h + outCol + shift) % 8 : (4 * h + outCol - shift + 8) % 8;
                const int src = 4 * srcCol + row;
                const int i = 4 * col + row;
                m.lo[h][i] = src < 16 ? static_cast<std::uint8_t>(src) : 0x80;
                m.hi[h][i] = src < 16 ? 0x80 : static_cast<std::uint8_t>(src - 16);
            }
        }
    }
    return m;
}

template <bool Forward>
__attribute__((target("aes,ssse3"))) void hardwareBlock(const std::uint32_t* rk, int rounds, std::uint8_t* buff)
{
    static const HalfMasks masks = makeHalfMasks(Forward);
    const __m128i lo0 = _mm_load_si128(reinterpret_cast<const __m128i*>(masks.lo[0]));
    const __m128i hi0 = _mm_load_si128(reinterpret_cast<const __m128i*>(masks.hi[0]));
    const __m128i lo1 = _mm_load_si128(reinterpret_cast<const __m128i*>(masks.lo[1]));
    const __m128i hi1 = _mm_load_si128(reinterpret_cast<const __m128i*>(masks.hi[1]));
    auto key = [&](int r, int h) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(rk + 8 * r + 4 * h)); };

    __m128i a = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(buff)), key(0, 0));
    __m128i b = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(buff + 16)), key(0, 1));
    for (int r = 1; r <= rounds; ++r) {
        const __m128i x = _mm_or_si128(_mm_shuffle_epi8(a, lo0), _mm_shuffle_epi8(b, hi0));
        const __m128i y = _mm_or_si128(_mm_shuffle_epi8(a, lo1), _mm_shuffle_epi8(b, hi1));
        if (r < rounds) {
            a = Forward ? _mm_aesenc_si128(x, key(r, 0)) : _mm_aesdec_si128(x, key(r, 0));
            b = Forward ? _mm_aesenc_si128(y, key(r, 1)) : _mm_aesdec_si128(y, key(r, 1));
        } else {
            a = Forward ? _mm_aesenclast_si128(x, key(r, 0)) : _mm_aesdeclast_si128(x, key(r, 0));
            b = Forward ? _mm_aesenclast_si128(y, key(r, 1)) : _mm_aesdeclast_si128(y, key(r, 1));
        }
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(buff), a);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(buff + 16), b);
}

bool hardwarePresent()
{
    static const bool present = __builtin_cpu_supports("aes") && __builtin_cpu_supports("ssse3");
    return present;
}
#endif

std::atomic<bool> hardwareAllowed{true};

// The 256-bit blocks of a message, `count` bytes, go to the AES
// instructions when the processor has them, else two at a time through the
// round tables.
template <bool Forward>
void blocks8(const CRijndael::Tables& t, const std::uint32_t* rk, int rounds, std::uint8_t* data, std::size_t count)
{
    std::size_t p = 0;
#ifdef KESTA_RIJNDAEL_AESNI
    if (hardwarePresent() && hardwareAllowed.load(std::memory_order_relaxed)) {
        for (; p < count; p += 32)
            hardwareBlock<Forward>(rk, rounds, data + p);
        return;
    }
#endif
    for (; p + 64 <= count; p += 64)
        cipherBlock<8, Forward, 2>(t, rk, rounds, data + p);
    for (; p < count; p += 32)
        cipherBlock<8, Forward>(t, rk, rounds, data + p);
}

template <bool Forward>
void cipherBlock(int nb, const CRijndael::Tables& t, const std::uint32_t* rk, int rounds, std::uint8_t* buff)
{
    switch (nb) {
    case 4: cipherBlock<4, Forward>(t, rk, rounds, buff); break;
    case 6: cipherBlock<6, Forward>(t, rk, rounds, buff); break;
    default: blocks8<Forward>(t, rk, rounds, buff, 32); break;
    }
}

} // namespace

CRijndael::Tables::Tables()
{
    // The powers of 3 run through every non-zero byte; 3^255 is 1 again, so
    // the logarithm of 1 comes out as 255, which the multiply takes modulo 255.
    ptab[0] = 1;
    ptab[1] = 3;
    ltab[3] = 1;
    for (int i = 2; i < 256; ++i) {
        ptab[i] = static_cast<std::uint8_t>(ptab[i - 1] ^ xtime(ptab[i - 1]));
        ltab[ptab[i]] = static_cast<std::uint8_t>(i);
    }

    // S-box: multiplicative inverse, then the affine map with constant 0x63.
    fbsub[0] = 0x63;
    rbsub[0x63] = 0;
    for (int i = 1; i < 256; ++i) {
        std::uint8_t x = ptab[255 - ltab[i]];
        std::uint8_t y = x;
        for (int k = 0; k < 4; ++k) {
            x = rotl8(x);
            y ^= x;
        }
        y ^= 0x63;
        fbsub[i] = y;
        rbsub[y] = static_cast<std::uint8_t>(i);
    }

    std::uint8_t c = 1;
    for (auto& constant : rco) {
        constant = c;
        c = xtime(c);
    }

    for (int i = 0; i < 256; ++i) {
        const std::uint8_t f = fbsub[i];
        const std::uint32_t fw = pack(xtime(f), f, f, static_cast<std::uint8_t>(f ^ xtime(f)));
        const std::uint8_t r = rbsub[i];
        const std::uint32_t rw = pack(bmul(0x0E, r), bmul(0x09, r), bmul(0x0D, r), bmul(0x0B, r));
        for (int k = 0; k < 4; ++k) {
            ftable[k][i] = k == 0 ? fw : rotl32(fw, 8 * k);
            rtable[k][i] = k == 0 ? rw : rotl32(rw, 8 * k);
        }
    }
}

std::uint8_t CRijndael::Tables::bmul(std::uint8_t c, std::uint8_t y) const
{
    return y == 0 ? 0 : ptab[(ltab[c] + ltab[y]) % 255];
}

std::uint32_t CRijndael::Tables::subWord(std::uint32_t a) const
{
    return pack(fbsub[byteOf(a, 0)], fbsub[byteOf(a, 1)], fbsub[byteOf(a, 2)], fbsub[byteOf(a, 3)]);
}

std::uint32_t CRijndael::Tables::invMixColumn(std::uint32_t x) const
{
    // The inverse round tables hold InvMixColumn of the inverse S-box's
    // output; going through the S-box first leaves InvMixColumn alone.
    return rtable[0][fbsub[byteOf(x, 0)]] ^ rtable[1][fbsub[byteOf(x, 1)]] ^ rtable[2][fbsub[byteOf(x, 2)]] ^
           rtable[3][fbsub[byteOf(x, 3)]];
}

CRijndael::CRijndael() = default;

bool CRijndael::allowHardware(bool allowed)
{
    hardwareAllowed.store(allowed, std::memory_order_relaxed);
#ifdef KESTA_RIJNDAEL_AESNI
    return hardwarePresent();
#else
    return false;
#endif
}

void CRijndael::gentables()
{
    tables_ = &sharedTables();
}

void CRijndael::gkey(std::int32_t nb, std::int32_t nk, std::span<const std::uint8_t> KEY)
{
    auto supported = [](std::int32_t words) { return words == 4 || words == 6 || words == 8; };
    if (!supported(nb) || !supported(nk))
        throw err::make(err::InvalidCall);
    if (KEY.size() < static_cast<std::size_t>(4 * nk))
        throw err::make(err::SubscriptOutOfRange);
    if (tables_ == nullptr)
        gentables();

    Nb_ = nb;
    Nk_ = nk;
    Nr_ = 6 + std::max(nb, nk);

    const Tables& t = *tables_;
    const int total = Nb_ * (Nr_ + 1);
    for (int i = 0; i < Nk_; ++i)
        fkey_[i] = load32(KEY.data() + 4 * i);
    for (int i = Nk_; i < total; ++i) {
        std::uint32_t w = fkey_[i - 1];
        if (i % Nk_ == 0)
            w = t.subWord(rotl32(w, 24)) ^ t.rco[i / Nk_ - 1];
        else if (Nk_ > 6 && i % Nk_ == 4)
            w = t.subWord(w);
        fkey_[i] = fkey_[i - Nk_] ^ w;
    }

    // Equivalent inverse cipher: round keys in reverse order, the inner ones
    // through InvMixColumn.
    for (int j = 0; j < Nb_; ++j) {
        rkey_[j] = fkey_[Nr_ * Nb_ + j];
        rkey_[Nr_ * Nb_ + j] = fkey_[j];
    }
    for (int r = 1; r < Nr_; ++r) {
        for (int j = 0; j < Nb_; ++j)
            rkey_[r * Nb_ + j] = t.invMixColumn(fkey_[(Nr_ - r) * Nb_ + j]);
    }
}

void CRijndael::Encrypt(std::span<std::uint8_t> buff) const
{
    if (Nb_ == 0) // no key yet: gkey sets the block size and the tables together
        throw err::make(err::InvalidCall);
    if (buff.size() < static_cast<std::size_t>(4 * Nb_))
        throw err::make(err::SubscriptOutOfRange);
    cipherBlock<true>(Nb_, *tables_, fkey_.data(), Nr_, buff.data());
}

void CRijndael::Decrypt(std::span<std::uint8_t> buff) const
{
    if (Nb_ == 0)
        throw err::make(err::InvalidCall);
    if (buff.size() < static_cast<std::size_t>(4 * Nb_))
        throw err::make(err::SubscriptOutOfRange);
    cipherBlock<false>(Nb_, *tables_, rkey_.data(), Nr_, buff.data());
}

void CRijndael::frameKey(std::span<const std::uint8_t> bytPassword)
{
    std::array<std::uint8_t, FrameKey> key{};
    std::copy_n(bytPassword.begin(), std::min(bytPassword.size(), key.size()), key.begin());
    gentables();
    gkey(8, 8, key);
}

CRijndael::Bytes CRijndael::EncryptData(std::span<const std::uint8_t> bytMessage,
                                        std::span<const std::uint8_t> bytPassword)
{
    if (bytMessage.empty() || bytPassword.empty())
        return {};
    if (bytMessage.size() > 0x7FFFFFFFu - FrameBlock)
        throw err::make(err::Overflow);
    frameKey(bytPassword);

    const std::size_t m = bytMessage.size();
    std::size_t total = m + 4;
    if (total % FrameBlock != 0)
        total += FrameBlock - total % FrameBlock;
    Bytes out(total, 0);
    store32(out.data(), static_cast<std::uint32_t>(m));
    std::copy(bytMessage.begin(), bytMessage.end(), out.begin() + 4);
    blocks8<true>(*tables_, fkey_.data(), Nr_, out.data(), total);
    return out;
}

CRijndael::Bytes CRijndael::DecryptData(std::span<const std::uint8_t> bytIn, std::span<const std::uint8_t> bytPassword)
{
    if (bytIn.empty() || bytPassword.empty() || bytIn.size() % FrameBlock != 0)
        return {};
    frameKey(bytPassword);
    Bytes work(bytIn.begin(), bytIn.end());
    const std::span<std::uint8_t> message = unframe(work);
    return Bytes(message.begin(), message.end());
}

std::span<std::uint8_t> CRijndael::unframe(std::span<std::uint8_t> work) const
{
    const std::size_t n = work.size();
    blocks8<false>(*tables_, rkey_.data(), Nr_, work.data(), n);
    const auto length = static_cast<std::int32_t>(load32(work.data()));
    if (static_cast<std::int64_t>(length) > static_cast<std::int64_t>(n) - 4)
        return {};
    // A message of no bytes cannot be sized: the framing never produces one.
    if (length <= 0)
        throw err::make(err::SubscriptOutOfRange);
    return work.subspan(4, static_cast<std::size_t>(length));
}

} // namespace kesta
