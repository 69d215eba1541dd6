// PCX decoding: pictures of every supported depth, and files that are none.
#include "apps/kel4x/pcx.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "apps/kel4x/png.h"

namespace kel4x {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A header of 128 bytes.
Bytes Header(unsigned width, unsigned height, unsigned bits, unsigned planes, unsigned line_bytes,
             bool packed = true) {
  Bytes file(128, 0);
  file[0] = 0x0A;
  file[1] = 5;
  file[2] = packed ? 1 : 0;
  file[3] = static_cast<std::uint8_t>(bits);
  file[8] = static_cast<std::uint8_t>((width - 1) & 0xFFU);
  file[9] = static_cast<std::uint8_t>((width - 1) >> 8U);
  file[10] = static_cast<std::uint8_t>((height - 1) & 0xFFU);
  file[11] = static_cast<std::uint8_t>((height - 1) >> 8U);
  file[65] = static_cast<std::uint8_t>(planes);
  file[66] = static_cast<std::uint8_t>(line_bytes & 0xFFU);
  file[67] = static_cast<std::uint8_t>(line_bytes >> 8U);
  return file;
}

Bytes With(Bytes file, const Bytes& more) {
  file.insert(file.end(), more.begin(), more.end());
  return file;
}

std::string Refusal(const Bytes& file) {
  try {
    DecodePcx(file);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "accepted";
}

TEST(Pcx, DecodesOneBitAsBlackAndWhite) {
  const Image image = DecodePcx(With(Header(4, 2, 1, 1, 2), {0xC1, 0xA0, 0x00, 0x50, 0x00}));
  EXPECT_EQ(image.width, 4U);
  EXPECT_EQ(image.height, 2U);
  EXPECT_EQ(image.rgb, (Bytes{255, 255, 255, 0,   0,   0,   255, 255, 255, 0,   0,   0,  //
                              0,   0,   0,   255, 255, 255, 0,   0,   0,   255, 255, 255}));
}

TEST(Pcx, TakesSixteenColoursOutOfTheHeader) {
  Bytes file = Header(2, 1, 1, 4, 2);
  file[16 + 3 * 5] = 10;
  file[16 + 3 * 5 + 1] = 20;
  file[16 + 3 * 5 + 2] = 30;
  // Planes 0 and 2 have the first pixel: colour 5.
  EXPECT_EQ(DecodePcx(With(file, {0x80, 0, 0, 0, 0x80, 0, 0, 0})).rgb, (Bytes{10, 20, 30, 0, 0, 0}));
}

TEST(Pcx, TakesFourBitsInOnePlane) {
  Bytes file = Header(3, 1, 4, 1, 2);
  file[16 + 3 * 1] = 1;
  file[16 + 3 * 2] = 2;
  file[16 + 3 * 3] = 3;
  EXPECT_EQ(DecodePcx(With(file, {0x12, 0x30})).rgb, (Bytes{1, 0, 0, 2, 0, 0, 3, 0, 0}));
}

TEST(Pcx, TakesThePaletteAtTheEnd) {
  Bytes file = With(Header(3, 1, 8, 1, 4), {0xC3, 7, 0xC1, 0xFF, 0x0C});
  file.resize(file.size() + 768, 0);
  file[file.size() - 768 + 3 * 7 + 1] = 99;
  EXPECT_EQ(DecodePcx(file).rgb, (Bytes{0, 99, 0, 0, 99, 0, 0, 99, 0}));
}

TEST(Pcx, TakesThreePlanesAsColours) {
  EXPECT_EQ(DecodePcx(With(Header(1, 1, 8, 3, 2), {1, 0, 2, 0, 3, 0})).rgb, (Bytes{1, 2, 3}));
}

TEST(Pcx, TakesAnUnpackedFile) {
  EXPECT_EQ(DecodePcx(With(Header(8, 1, 1, 1, 2, false), {0xFF, 0})).rgb, Bytes(24, 255));
}

TEST(Pcx, StopsARunAtTheEndOfThePicture) {
  EXPECT_EQ(DecodePcx(With(Header(8, 1, 1, 1, 2), {0xFF, 0xFF})).rgb, Bytes(24, 255));
}

TEST(Pcx, SaysWhyAFileIsNone) {
  EXPECT_EQ(Refusal({}), "PCX image: 0 bytes are less than a header of 128");
  Bytes file = Header(8, 1, 1, 1, 2);
  file[0] = 0x0B;
  EXPECT_EQ(Refusal(file), "PCX image: does not begin with the byte 10");
  EXPECT_EQ(Refusal(Header(8, 1, 3, 1, 2)), "PCX image: 3 bits in 1 planes are not supported");
  EXPECT_EQ(Refusal(Header(17, 1, 1, 1, 2)), "PCX image: a line of 2 bytes is too short for 17 pixels");
  EXPECT_EQ(Refusal(Header(5000, 1, 1, 1, 700)), "PCX image: 5000 by 1 pixels are more than 4096 by 4096");
  EXPECT_EQ(Refusal(With(Header(16, 4, 1, 1, 2), {1, 2, 3})), "PCX image: cut short after 3 of 8 bytes");
  EXPECT_EQ(Refusal(With(Header(16, 1, 1, 1, 2), {1, 0xC5})), "PCX image: cut short within a run");
}

TEST(Pcx, GivesAFewBytesNoLargePicture) {
  EXPECT_EQ(Refusal(With(Header(4096, 4096, 8, 3, 4096), Bytes(100, 0xFF))),
            "PCX image: cut short: 100 bytes of data cannot hold 50331648");
}

TEST(Pcx, SurvivesRandomBytes) {
  std::minstd_rand engine(1);
  const auto random = [&] { return static_cast<unsigned>(engine()); };
  std::size_t decoded = 0;
  for (int round = 0; round < 3000; ++round) {
    Bytes file = With(Header(1 + random() % 40, 1 + random() % 20, 8, 1, 40), Bytes(random() % 900));
    for (std::size_t i = 128; i < file.size(); ++i) file[i] = static_cast<std::uint8_t>(random());
    for (int i = 0; i < 2; ++i) file[random() % file.size()] = static_cast<std::uint8_t>(random());
    try {
      const Image image = DecodePcx(file);
      EXPECT_EQ(image.rgb.size(), 3 * image.width * image.height);
      ++decoded;
    } catch (const std::runtime_error& error) {
      EXPECT_TRUE(std::string_view(error.what()).starts_with("PCX image: ")) << error.what();
    }
  }
  EXPECT_GT(decoded, 100U);
}

TEST(Png, BeginsWithItsSignatureAndHoldsTheSize) {
  const Bytes png = EncodePng({.width = 2, .height = 1, .rgb = {1, 2, 3, 4, 5, 6}});
  ASSERT_GT(png.size(), 24U);
  EXPECT_EQ(Bytes(png.begin(), png.begin() + 8), (Bytes{0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A}));
  EXPECT_EQ(png[19], 2);
  EXPECT_EQ(png[23], 1);
}

}  // namespace
}  // namespace kel4x
