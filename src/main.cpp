// main.cpp - the start-up order and the way out, nothing else.
int main() { return 0; }
