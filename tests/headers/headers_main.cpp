// Links the one-header translation units: the build itself is the check; running proves the
// program linked without the library (the headers hold no definitions that need it).
int main() {
    return 0;
}
