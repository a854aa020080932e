// The XML library, Xerces-C, and what is kept out of it.
//
// Four files here define a part of the library anew, ahead of its archive, so that the archive's
// own part is never linked:
//
// - no_network.cpp: the accessor for URLs. Nothing that a document says makes the program open a
//   connection, and no network client is linked with it.
// - attribute_table.cpp: how attributes of one element are compared, when they are many.
// - encodings.cpp: the service for encodings that the library does not read by itself, over iconv,
//   by way of converter.h. The archive's own has tables of 30 megabytes. The writer converts with
//   the same tables, and what it has written is read with them before it counts. UTF-8 is read as
//   before, but faster.
// - late_tables.cpp: the list of what the library sets up when it starts. Nearly all of that are
//   tables that only schemas need, close to half of the instructions of a run on a small map. They
//   are made when a document first names a schema. The register of encodings is never made: the
//   library asks it only when told to be strict.
//
// The build compares the list with what the archive's own calls, and links the library's own where
// the two differ in more than the register.
// TQS_STOCK_LIBRARY has the library's own list and encodings linked in any case, for comparison
// alone: its tables differ from iconv's, so that a map in another encoding than UTF-8 may come back
// as another. The network stays out.
#pragma once

// Makes the tables that schemas need, unless they are made. To be called before the library is
// given a schema, while it is started. Where it fails, for lack of memory, the library's panic
// handler is called, as at the start.
void MakeSchemaTables();
