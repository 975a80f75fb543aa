// Some of Assimp's importers (3D, AMF, IRR, LWO, OpenGEX, RAW) lose parts of a scene while they read it.

#if defined(__SANITIZE_ADDRESS__)
extern "C" const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libassimp.so\n";
}
#endif
