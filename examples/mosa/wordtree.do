* A text is read, its words are counted in a tree, and the tree is kept in a file. Another session
* that has only the library and the file prints it.
version 12.1
mosa
struct word {
    string scalar text
    real scalar count
    pointer(struct word scalar) scalar before, behind
}

pointer(struct word scalar) scalar newword(string scalar text)
{
    struct word scalar w

    w.text = text
    w.count = 0
    return(&w)
}

// The place of a word in the tree, made when it is not there.
pointer(struct word scalar) scalar placeof(pointer(struct word scalar) scalar root,
                                           string scalar text)
{
    pointer(struct word scalar) scalar p

    if (root == NULL) root = newword(text)
    p = root
    while (p->text != text) {
        if (text < p->text) {
            if (p->before == NULL) p->before = newword(text)
            p = p->before
        }
        else {
            if (p->behind == NULL) p->behind = newword(text)
            p = p->behind
        }
    }
    return(p)
}

pointer(struct word scalar) scalar readwords(string scalar filename)
{
    pointer(struct word scalar) scalar root, p
    string matrix line
    string rowvector words
    real scalar f, k

    root = NULL
    f = fopen(filename, "r")
    fautoclose(f)
    while (rows(line = fget(f))) {
        words = tokens(strlower(line), " .,")
        for (k = 1; k <= cols(words); k++) {
            if (anyof((".", ","), words[k])) continue
            p = placeof(root, words[k])
            p->count = p->count + 1
        }
    }
    fclose(f)
    return(root)
}

void printwords(pointer(struct word scalar) scalar root)
{
    if (root == NULL) return
    printwords(root->before)
    printf("%-10s %g\n", root->text, root->count)
    printwords(root->behind)
}

void savewords(pointer(struct word scalar) scalar root, string scalar filename)
{
    real scalar f

    f = fopen(filename, "w")
    fputmatrix(f, root)
    fclose(f)
}

pointer(struct word scalar) scalar loadwords(string scalar filename)
{
    pointer(struct word scalar) scalar root
    real scalar f

    f = fopen(filename, "r")
    root = fgetmatrix(f)
    fclose(f)
    return(root)
}

f = fopen("brook.txt", "w")
fput(f, "The brook runs to the river, the river runs to the sea.")
fput(f, "")
fput(f, "To the sea, to the sea runs the brook.")
fclose(f)
tree = readwords("brook.txt")
savewords(tree, "brook.tree")
end

mosa mlib create lwords, size(20)
mosa mlib add lwords *()
mosa clear
mosa mlib index

mosa
printwords(loadwords("brook.tree"))
// the functions that were needed came from the library
end
mosa which loadwords()
mosa which placeof()
