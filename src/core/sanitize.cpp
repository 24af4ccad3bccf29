// What the leak checker of the sanitized build is told to leave out: what the library of fonts
// behind page output keeps for the life of the process.
#ifdef OVATA_DEV
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}
extern "C" const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
#endif
