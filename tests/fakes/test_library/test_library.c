#ifdef _WIN32
__declspec(dllexport)
#endif
    int QuirepressTestValue(void) {
    return 42;
}
