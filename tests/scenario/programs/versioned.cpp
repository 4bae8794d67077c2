// A program that has nothing but a version resource, for what reads the versions of programs.

int wmain() { return 0; }
