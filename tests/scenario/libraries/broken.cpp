// A library without any of the entries that the manager looks for.
extern "C" int __stdcall Nothing() { return 0; }
