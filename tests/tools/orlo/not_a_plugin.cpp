// A shared library that exports no registration function: the tool must refuse it as a
// plug-in and say why.
extern "C" __attribute__((visibility("default"))) int OrloSomethingElse() { return 1; }
