// Test stand-ins for outside libraries are told how to misbehave, and report
// what was done to them, through environment variables of their process.
#ifndef RL132_TEST_STANDIN_H
#define RL132_TEST_STANDIN_H
#include <windows.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace standin {
inline bool Mode(const char* variable, const char* name)
{
    char v[64];
    DWORD n = GetEnvironmentVariableA(variable, v, sizeof v);
    return n > 0 && n < sizeof v && strcmp(v, name) == 0;
}
inline void Record(const char* name, long value)
{
    char v[32];
    snprintf(v, sizeof v, "%ld", value);
    SetEnvironmentVariableA(name, v);
}
inline void Count(const char* name)
{
    char v[32];
    DWORD n = GetEnvironmentVariableA(name, v, sizeof v);
    Record(name, ((n > 0 && n < sizeof v) ? atol(v) : 0) + 1);
}
} // namespace standin
#endif
