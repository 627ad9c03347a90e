#pragma once

/// Writes on the command line in the manner of printf; adds no line end. `%s` takes wide text,
/// `%ld` a long,
/// `%d` an int, `%08x` an unsigned int, `%-20s` pads. Answers RTNORM.
int acutPrintf(const wchar_t* format, ...);

/// RTNORM when `text` matches the wildcard pattern, case-sensitively: `#` a digit, `@` a letter,
/// `.` neither,
/// `*` any run, `?` one character, `[...]` one of, `[~...]` none of, `,` alternatives, `~` first in
/// an alternative negates it, a back quote takes the next character literally. RTERROR otherwise.
int acutWcMatch(const wchar_t* text, const wchar_t* pattern);

/// Non-zero when the user has pressed the break key since the last call.
int acedUsrBrk();
