* A linked list and a search tree, built from structures that point to one another.
version 12.1
mosa
struct link {
    string scalar word
    pointer(struct link scalar) scalar next
}

struct leaf {
    real scalar key
    pointer(struct leaf scalar) scalar low, high
}

// The words of a text, the last one first.
pointer(struct link scalar) scalar words_of(string scalar text)
{
    string rowvector words
    pointer(struct link scalar) scalar first
    real scalar i

    words = tokens(text)
    first = NULL
    for (i = 1; i <= cols(words); i++) first = pushed(words[i], first)
    return(first)
}

pointer(struct link scalar) scalar pushed(string scalar word,
                                          pointer(struct link scalar) scalar next)
{
    struct link scalar one

    one.word = word
    one.next = next
    return(&one)
}

void show_words(pointer(struct link scalar) scalar p)
{
    while (p != NULL) {
        printf("%s ", p->word)
        p = p->next
    }
    printf("\n")
}

// A leaf is found or grown where it belongs.
pointer(struct leaf scalar) scalar grown(pointer(struct leaf scalar) scalar tree,
                                         real scalar key)
{
    struct leaf scalar one

    if (tree == NULL) {
        one.key = key
        one.low = one.high = NULL
        return(&one)
    }
    if (key < tree->key) tree->low = grown(tree->low, key)
    else if (key > tree->key) tree->high = grown(tree->high, key)
    return(tree)
}

void show_tree(pointer(struct leaf scalar) scalar tree)
{
    if (tree == NULL) return
    show_tree(tree->low)
    printf("%g ", tree->key)
    show_tree(tree->high)
}

real scalar depth(pointer(struct leaf scalar) scalar tree)
{
    real scalar a, b

    if (tree == NULL) return(0)
    a = depth(tree->low)
    b = depth(tree->high)
    return(1 + (a > b ? a : b))
}

void tree_of(real rowvector keys)
{
    pointer(struct leaf scalar) scalar tree
    real scalar i

    tree = NULL
    for (i = 1; i <= cols(keys); i++) tree = grown(tree, keys[i])
    show_tree(tree)
    printf("\ndepth %g\n", depth(tree))
}

show_words(words_of("one two three four"))
tree_of((50, 20, 70, 10, 30, 60, 80, 25, 35, 65, 20))
end
