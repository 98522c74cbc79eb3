// ICU's functions, opened when the first one is needed:
//
//     static const auto toUpper = LATE_ICU_UC(u_strToUpper);

#pragma once

#include <unicode/uversion.h>

#include "late-library.h"

// ICU puts its version into the names of libraries and functions; the headers know it.
#define ICU_TEXT_OF(macro) #macro
#define ICU_EXPANDED_TEXT_OF(macro) ICU_TEXT_OF(macro)
#define ICU_LIBRARY(name) name ".so." ICU_EXPANDED_TEXT_OF(U_ICU_VERSION_MAJOR_NUM)

namespace Platform {

// Texts and locales.
inline LateLibrary& IcuUc()
{
    static LateLibrary library(ICU_LIBRARY("libicuuc"));
    return library;
}

// Dates and time zones.
inline LateLibrary& IcuI18n()
{
    static LateLibrary library(ICU_LIBRARY("libicui18n"));
    return library;
}

}  // namespace Platform

#define LATE_ICU(library, name) \
    Platform::LateFunction<decltype(name)>(Platform::library(), ICU_EXPANDED_TEXT_OF(name))
#define LATE_ICU_UC(name) LATE_ICU(IcuUc, name)
#define LATE_ICU_I18N(name) LATE_ICU(IcuI18n, name)
