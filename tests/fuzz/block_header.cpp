// The header of a definite-length block: what is made of it does not depend on the pieces it is read in.
#include <algorithm>
#include <span>

#include "tests/fuzz/input.h"
#include "workbench/ports/block_progress.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using workbench::BlockProgress;
  if (size < 1) return 0;
  const std::size_t step = data[0] % 8U + 1;
  const std::span<const std::uint8_t> bytes(data + 1, size - 1);
  BlockProgress whole;
  whole.Begin();
  whole.Consume(bytes);
  BlockProgress pieces;
  pieces.Begin();
  for (std::size_t i = 0; i < bytes.size(); i += step) {
    pieces.Consume(bytes.subspan(i, std::min(step, bytes.size() - i)));
  }
  fuzz::Require(whole.Now() == pieces.Now(), "pieces make no difference to the state");
  fuzz::Require(whole.Now() != BlockProgress::State::kData || whole.Remaining() == pieces.Remaining(),
                "pieces make no difference to the rest");
  return 0;
}
