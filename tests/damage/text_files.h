/*
 * text_files.h - sound column files, name lists and ASCII grids, and what their readers must hold
 * to whatever they are given.
 */
#ifndef CLUTTER_TESTS_DAMAGE_TEXT_FILES_H
#define CLUTTER_TESTS_DAMAGE_TEXT_FILES_H

#include <string>

#include "support/temp_dir.h"

namespace clutter::test {

ByteVector columnFileSeed(const std::string& scratch);
ByteVector nameListSeed(const std::string& scratch);
ByteVector gridFileSeed(const std::string& scratch);

void exerciseColumnFile(const std::string& path, const std::string& copy);
void exerciseNameList(const std::string& path, const std::string& copy);
void exerciseGridFile(const std::string& path, const std::string& copy);

}  // namespace clutter::test

#endif
