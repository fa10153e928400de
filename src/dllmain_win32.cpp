// The library's entry routine: there is nothing to set up.

extern "C" int __stdcall DllMain(void* instance, unsigned long reason, void* reserved);

int __stdcall DllMain(void* /*instance*/, unsigned long /*reason*/, void* /*reserved*/) {
    return 1;
}
