#pragma once

#include <string>
#include <vector>

#include "jet/catalog/catalog.h"

namespace jet {

// Table definition pages. A definition is one byte string over a chain of pages (02 01, u16 room behind the
// string's end - 8, u32 next page): the first page gives all its bytes, each further one those from offset 8.
// Its parts:
//
//   header (FileLayout::tdef...), statistics of the real indexes, column descriptors, column names, real
//   indexes, logical indexes, names of the logical indexes, usage maps of memo and OLE columns, FF FF
//
//   statistics  u32 0, u32 unique entries, u32 0 (not in Jet 3)
//   column      type, u32 mark*, u16 number, u16 variable index, u16 position, sort order (decimals:
//   precision
//               and scale), flags, extended flags*, u32 0*, u16 fixed offset, u16 length
//   real index  u32 mark*, 10 x {u16 column number, u8 ascending}, map row, root page, u32*, flags, 5 bytes*
//   logical     u32 mark*, number, real index, side, partner's number, partner's table, cascades, kind, u32
//   0* usage maps  u16 column number, owned map row, free map row
//                                                                       (* Jet 4 only)
struct TdefBytes {
  std::string bytes;              // of the whole length the definition states
  std::vector<PageNumber> pages;  // the chain, first page first
};

// Throws Error 3049 naming the page: not a definition page, a cycle, an impossible length.
TdefBytes readTdefBytes(Pager& pager, PageNumber first);

// The definition without name and properties. Throws Error 3049; 3259 for a column type of a later format.
TableDef parseTdef(const TdefBytes& stored, const FileHeader& header);

std::string encodeTdef(const TableDef& table, Version version);

// Writes the definition to the chain that begins with table.page, which grows or shrinks as needed. Every
// page of `present` belongs to the chain already; of a new table it holds the first page only.
void writeTdef(Pager& pager, const TableDef& table, const std::vector<PageNumber>& present);

}  // namespace jet
