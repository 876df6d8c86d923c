/* The tables of liblzma's checks, filled when the module starts: 16 KiB that no coder makes smaller
 * need not be sent. Byte by byte and by slices: entry s of a byte is the remainder of that byte
 * with s zero bytes behind it. CRC-32 as ISO 3309 has it, CRC-64 as ECMA-182, both reflected. */

#include <stdint.h>

uint32_t lzma_crc32_table[8][256];
uint64_t lzma_crc64_table[4][256];

static uint64_t PassByte(uint64_t remainder, uint64_t polynomial) {
    for (int bit = 0; bit < 8; ++bit) {
        remainder = remainder & 1 ? remainder >> 1 ^ polynomial : remainder >> 1;
    }
    return remainder;
}

__attribute__((constructor)) static void FillCheckTables(void) {
    for (int byte = 0; byte < 256; ++byte) {
        uint64_t remainder = (uint64_t)byte;
        for (int slice = 0; slice < 8; ++slice) {
            remainder = PassByte(remainder, 0xEDB88320U);
            lzma_crc32_table[slice][byte] = (uint32_t)remainder;
        }
        remainder = (uint64_t)byte;
        for (int slice = 0; slice < 4; ++slice) {
            remainder = PassByte(remainder, 0xC96C5795D7870F42U);
            lzma_crc64_table[slice][byte] = remainder;
        }
    }
}
