// Arbitrary text as the board file: the parser must never overrun the
// 128-byte identifier, and a found identifier is always terminated.
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "board_identity.h"
#include "fuzz_box.h"

// Its diagnostics go to stdout; keep the fuzzer's output readable.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    silence_stdout();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string json(reinterpret_cast<const char*>(data), size);
    char board[kBoardIdSize + 16];
    memset(board, 0x5A, sizeof(board));
    board[0] = '\0';
    const int found = GetJsonValue(json.c_str(), "board", board);
    if (found != 0 && found != 1) {
        abort();
    }
    if (memchr(board, '\0', kBoardIdSize) == nullptr) {
        abort();
    }
    for (size_t i = kBoardIdSize; i < sizeof(board); ++i) {
        if (board[i] != 0x5A) {
            abort();
        }
    }
    return 0;
}
