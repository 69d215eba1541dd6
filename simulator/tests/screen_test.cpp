// The screen: a definite-length block with a PCX picture that shows what the instrument measures.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "simulator/pcx.h"
#include "simulator/tests/fixture.h"

namespace simulator {
namespace {

std::uint8_t ByteAt(std::string_view bytes, std::size_t at) {
  return static_cast<std::uint8_t>(bytes.at(at));
}
int WordAt(std::string_view bytes, std::size_t at) { return ByteAt(bytes, at) + 256 * ByteAt(bytes, at + 1); }

// A picture decoded again, written from the description of the format.
struct Decoded {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> dots;  // palette positions

  std::uint8_t& Dot(int x, int y) {
    return dots.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x));
  }
};

Decoded Decode(std::string_view pcx) {
  Decoded picture;
  EXPECT_EQ(ByteAt(pcx, 0), 10) << "manufacturer";
  EXPECT_EQ(ByteAt(pcx, 1), 5) << "version";
  EXPECT_EQ(ByteAt(pcx, 2), 1) << "encoding";
  EXPECT_EQ(ByteAt(pcx, 3), 1) << "bits a dot";
  EXPECT_EQ(ByteAt(pcx, 65), 4) << "planes";
  picture.width = WordAt(pcx, 8) - WordAt(pcx, 4) + 1;
  picture.height = WordAt(pcx, 10) - WordAt(pcx, 6) + 1;
  const int line_bytes = WordAt(pcx, 66);
  EXPECT_EQ(line_bytes % 2, 0);
  picture.dots.resize(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height));
  std::size_t at = 128;
  for (int y = 0; y < picture.height; ++y) {
    for (int plane = 0; plane < 4; ++plane) {
      for (int column = 0; column < line_bytes;) {
        int run = 1;
        std::uint8_t value = ByteAt(pcx, at++);
        if (value >= 0xC0) {
          run = value & 0x3F;
          value = ByteAt(pcx, at++);
        }
        for (; run > 0; --run, ++column) {
          EXPECT_LT(column, line_bytes) << "a run crosses the end of a line";
          for (int bit = 0; bit < 8; ++bit) {
            const int x = column * 8 + bit;
            if (x >= picture.width || (value >> (7 - bit) & 1) == 0) continue;
            picture.Dot(x, y) |= static_cast<std::uint8_t>(1 << plane);
          }
        }
      }
    }
  }
  EXPECT_EQ(at, pcx.size()) << "bytes behind the picture";
  return picture;
}

// The data of a definite-length block.
std::string_view Data(std::string_view block) {
  EXPECT_EQ(block.at(0), '#');
  const std::size_t digits = static_cast<std::size_t>(block.at(1) - '0');
  const auto length = static_cast<std::size_t>(NumberIn(block.substr(2, digits)));
  EXPECT_EQ(block.size(), 2 + digits + length);
  return block.substr(2 + digits);
}

std::size_t Count(const Decoded& picture, Picture::Plane plane) {
  std::size_t count = 0;
  for (const std::uint8_t dot : picture.dots) count += dot >> plane & 1;
  return count;
}

TEST(PcxTest, RoundTripsOddWidthsAndEveryByteValue) {
  Picture::Palette palette{};
  Picture picture(37, 260, palette);
  for (int y = 0; y < 256; ++y) {
    for (int bit = 0; bit < 8; ++bit) {
      if ((y >> (7 - bit) & 1) != 0) picture.Dot(8 + bit, y, Picture::kTrace);
    }
  }
  picture.Line(-5, 258, 100, 258, Picture::kText);
  Decoded decoded = Decode(EncodePcx(picture));
  ASSERT_EQ(decoded.width, 37);
  ASSERT_EQ(decoded.height, 260);
  for (int y = 0; y < 256; ++y) {
    int value = 0;
    for (int bit = 0; bit < 8; ++bit) {
      value = value * 2 + (decoded.Dot(8 + bit, y) >> Picture::kTrace & 1);
    }
    ASSERT_EQ(value, y);
  }
  EXPECT_EQ(Count(decoded, Picture::kText), 37U) << "a line is cut at the borders";
}

TEST(ScreenTest, IsAnEmptyBlockBeforeTheFirstCapture) {
  Bench bench;
  EXPECT_EQ(bench.Ask("READ:BUFFER:PCX?"), "#10");
}

TEST(ScreenTest, HasTextAndAPlotInEveryModeAndFitsA16BitLength) {
  Bench bench;
  for (const std::string& mode :
       Fields("NORM,CDI,SP_1,SP_2,SP_3,APH,AGD,PJIT,AJIT,POL,ADIS,CCDF,CENV,EPAT,EYEM,HIST,HII,HIQ,PAR,PV")) {
    bench.Enter(mode);
    for (const std::string_view noise : {"OFF", "ON"}) {
      bench.Ask("SENS:ATSC:NOISE  15;NOISE:MODE " + std::string(noise));
      ASSERT_EQ(bench.Ask("READ:SCREEN:BUFFER?"), "0") << mode;
      const std::string block = bench.Ask("READ:BUFFER:PCX?");
      EXPECT_LT(block.size(), 32768U) << mode;
      const Decoded picture = Decode(Data(block));
      EXPECT_EQ(picture.width, 640);
      EXPECT_EQ(picture.height, 480);
      EXPECT_GT(Count(picture, Picture::kText), 5000U) << mode;
      EXPECT_GT(Count(picture, Picture::kTrace), 100U) << mode;
      EXPECT_GT(Count(picture, Picture::kGrid), 1000U) << mode;
    }
  }
}

TEST(ScreenTest, ShowsTheReadingsOfTheMomentOfCapture) {
  Configuration configuration;
  configuration.clock_start = 0;
  Bench bench(configuration);
  bench.Ask("READ:SCREEN:BUFFER?");
  const std::string first = bench.Ask("READ:BUFFER:PCX?");
  bench.Ask("SENS:ATSC:NOISE  15;NOISE:MODE ON");
  EXPECT_EQ(bench.Ask("READ:BUFFER:PCX?"), first) << "the buffer stays until the next capture";
  bench.Ask("READ:SCREEN:BUFFER?");
  EXPECT_NE(bench.Ask("READ:BUFFER:PCX?"), first);
}

TEST(ScreenTest, ShowsNothingOfWhatCameBetweenCaptureAndFetch) {
  Configuration configuration;
  configuration.clock_start = 0;
  Bench bench(configuration);
  Bench other(configuration);
  for (Bench* const each : {&bench, &other}) {
    each->Enter("APH");
    each->Ask("READ:SCREEN:BUFFER?");
  }
  other.Ask("SENS:ATSC:NOISE  15;NOISE:MODE ON;:SYST:REM;:SENS:FREQ:CENT 600 MHZ;:SENS:ATSC:MEAS EPAT");
  other.Wait(100.0);
  EXPECT_EQ(other.Ask("READ:BUFFER:PCX?"), bench.Ask("READ:BUFFER:PCX?"));
}

TEST(ScreenTest, ChangesWithTheRemoteState) {
  Bench bench;
  bench.Ask("READ:SCREEN:BUFFER?");
  const std::string local = bench.Ask("READ:BUFFER:PCX?");
  bench.Ask("SYST:REM;:READ:SCREEN:BUFFER?");
  EXPECT_NE(bench.Ask("READ:BUFFER:PCX?"), local);
}

TEST(ScreenTest, IsDrawnWithoutSignalAndInOtherOperatingModes) {
  Configuration configuration;
  configuration.signal.present = false;
  Bench bench(configuration);
  EXPECT_EQ(bench.Ask("READ:SCREEN:BUFFER?"), "0");
  EXPECT_GT(Count(Decode(Data(bench.Ask("READ:BUFFER:PCX?"))), Picture::kText), 1000U);
  bench.Ask("SYST:MODE DVBT");
  EXPECT_EQ(bench.Ask("READ:SCREEN:BUFFER?"), "0");
  EXPECT_EQ(Count(Decode(Data(bench.Ask("READ:BUFFER:PCX?"))), Picture::kTrace), 0U);
}

}  // namespace
}  // namespace simulator
