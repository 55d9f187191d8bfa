#pragma once

#include <filesystem>
#include <string>

// Fails the running test unless the programs of mdbtools find the same tables in a file as this engine, with
// the same rows (in any order). Does nothing when mdbtools are not installed and with files of Jet 3, whose
// texts they read in a code page of their own choice.
void expectOtherReaderAgrees(const std::filesystem::path& file, const std::u16string& connect = {});

// The same for the bytes of a file that exists in memory only.
void expectOtherReaderAgreesOn(const std::string& bytes);
