// REPLACED AT MERGE: operations that other parts of the system provide (the
// lock files and directory listings of the utility library, UtilsReadFile of
// the profile files). Declared here with their signatures so that the file
// and program conversions can call them; the lead deletes this header and
// convert/pending.cc when the real ones arrive.
#ifndef KX_CONVERT_PENDING_H
#define KX_CONVERT_PENDING_H

extern "C" {

// The file's lines without those holding one of the exclusions; a heap text
// (NULL for an empty or unreadable file), its length in *length.
char *UtilsReadFile(const char *path, int *length, char **exclusions, int exclusionCount);

}  // extern "C"

#endif
