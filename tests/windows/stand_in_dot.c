/* Stands for Graphviz' dot.exe, which no package brings: a picture that says how many bytes of a graph came in. */
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    char buffer[4096];
    size_t count = 0, all = 0;
    while ((count = fread(buffer, 1, sizeof buffer, stdin)) > 0)
        all += count;
    if (argc != 2 || strcmp(argv[1], "-Tsvg") != 0) {
        fprintf(stderr, "no such format");
        return 3;
    }
    printf("<?xml version=\"1.0\"?><svg>%u</svg>", (unsigned)all);
    return 0;
}
