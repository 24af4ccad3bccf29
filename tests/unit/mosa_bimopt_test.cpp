// Kernels of maximum likelihood: sums against sums spelled out in the language, likelihoods and
// their derivatives against differences of the plain formulas with thirty digits.
#include "mosabi.h"

static const std::string X = "X = (.5, 1 \\ -1, 2 \\ 2, 0 \\ .3, -1); w = (1 \\ 2 \\ 1 \\ 3); "
                             "s = (.5 \\ -1 \\ 2 \\ 3); Z = (X, J(4, 1, 1))";

static const called sums[] = {
    {"_mopt_xb(X, (1, 10, 100))'", "R1,4:110.5 119 102 90.3"},
    {"_mopt_xb(X, (1 \\ 10), 0)'", "R1,4:10.5 19 2 -9.7"},
    {"_mopt_xb(X, (1, 10), 0, w)'", "R1,4:11.5 21 3 -6.7"},
    {"_mopt_xb(X, (1, 10), 0, 1)'", "R1,4:11.5 20 3 -8.7"},
    {"_mopt_xb(J(3, 0, .), 7)'", "R1,3:7 7 7"},
    {"_mopt_xb((1 \\ . \\ 3), 2, 0)'", "R1,3:2 . 6"},
    {"_mopt_xb((1 \\ 2), (1, .))'", "R1,2:. ."},
    {"_mopt_xb(X, (1, 2))", "3200"},
    {"_mopt_xb(X, (1, 2), 0, (1 \\ 2))", "3200"},
    {"_mopt_xbmat(X, (1, 10, 0 \\ 0, 0, 5))", "R4,2:10.5 5 19 5 2 5 -9.7 5"},
    {"_mopt_xbmat(X, (1, 10), 0)'", "R1,4:10.5 19 2 -9.7"},

    {"H = .; _mopt_holdxbi(H, 2, _mopt_xb(X, (1, 10, 100))); _mopt_xbdelta(H, 2, X, 1, 2)'",
     "R1,4:111.5 117 106 90.9"},
    {"_mopt_xbdelta(H, 2, X, 3, .5)'", "R1,4:111 119.5 102.5 90.8"},
    {"_mopt_holdxbi(H, 1, (1 \\ 2 \\ 3 \\ 4)); _mopt_xbdelta(H, 1, X, 2, 1)'", "R1,4:2 4 3 3"},
    {"_mopt_holdxbi(H, 3, s); (length(H), *H[3] == s, (*H[2])[1])", "R1,3:3 1 110.5"},
    {"_mopt_unholdxbi(H, 2); H[2] == NULL", "R1,1:1"},
    {"_mopt_xbdelta(H, 2, X, 1, 2)", "3300"},
    {"_mopt_unholdxbi(H, 9)", "3300"},
    {"_mopt_xbdelta(H, 1, (1 \\ 2), 1, 2)", "3200"},
    {"_mopt_xbdelta(s, 1, X, 1, 2)", "3300"},

    {"mreldif(_mopt_vecsum(X, s), s' * Z) < 1e-15", "R1,1:1"},
    {"mreldif(_mopt_vecsum(X, s, 1, w), (w :* s)' * Z) < 1e-15", "R1,1:1"},
    {"mreldif(_mopt_oldvecsum(X, s, 0), s' * X) < 1e-15", "R1,1:1"},
    {"_mopt_vecsum(X, (1 \\ 2 \\ . \\ 3))", "R1,3:. . ."},
    {"_mopt_vecsum(X, (1 \\ 2))", "3200"},
    {"mreldif(_mopt_matsum_xx(X, s), Z' * (s :* Z)) < 1e-15", "R1,1:1"},
    {"mreldif(_mopt_oldmatsum_xx(X, s, 0, w), X' * (s :* w :* X)) < 1e-15", "R1,1:1"},
    {"mreldif(_mopt_matsum_xy(X, s, w), Z' * (w :* (s, J(4, 1, 1)))) < 1e-15", "R1,1:1"},
    {"mreldif(_mopt_matsum_xy(X, s, w, 0, 0), X' * (w :* s)) < 1e-15", "R1,1:1"},
    {"mreldif(_mopt_oldmatsum_xy(X, s, w, 0, 1, w), X' * (w :* w :* (s, J(4, 1, 1)))) < 1e-15",
     "R1,1:1"},
    {"_mopt_matsum_xy(X, (1 \\ 2), s)", "3200"},
    // what plain addition loses
    {"a = (1e16 \\ J(63, 1, 0) \\ J(1000, 1, 1) \\ J(24, 1, 0) \\ -1e16); _mopt_vecsum(J(1089, 0, "
     ".), a)",
     "R1,1:1000"},
    {"_mopt_oldvecsum(J(1089, 0, .), a) == 1000", "R1,1:0"},
    {"_mopt_matsum_xx(J(1089, 0, .), a)", "R1,1:1000"},
    // groups 1 1 2 2, their factors 5 and 7
    {"g = (1 \\ 1 \\ 2 \\ 2); a = (. \\ 5 \\ . \\ 7); u = s[1] * Z[1,] + s[2] * Z[2,]; v = s[3] * "
     "Z[3,] + s[4] * Z[4,]; "
     "mreldif(_mopt_matbysum_xx(X, g, a, s), 5 * u'u + 7 * v'v) < 1e-15",
     "R1,1:1"},
    {"mreldif(_mopt_matbysum_xy(X, J(4, 0, .), g, a, s, w), 5 * u' * 3 + 7 * v' * 4) < 1e-15",
     "R1,1:1"},
    {"_mopt_matbysum_xx(X, g, (1 \\ . \\ 1 \\ 1), s, 0)", "R2,2:. . . ."},
};

TEST(MosaMopt, Sums)
{
    session();
    ASSERT_EQ(ms(X), 0);
    try_all(sums);
}

static const called models[] = {
    {"f = g = H = .; _mopt_logit_d2(2, (1 \\ 0 \\ 1 \\ 0), X, (.4, -.3, .2), f, g, H, w); f, g",
     "R1,4:-4.851199912 0.810247593 1.185574383 -1.82674445"},
    {"H", "R3,3:-1.338018421 0.9356417149 -0.2947834424 0.9356417149 -2.642956775 -0.4227116633 "
          "-0.2947834424 -0.4227116633 -1.556110529"},
    {"_mopt_probit_d2(2, (1 \\ 0 \\ 1 \\ 0), X, (.4, -.3, .2), f, g, H, w); f, g",
     "R1,4:-5.219868144 0.5709872476 2.955090777 -3.402195859"},
    {"H", "R3,3:-2.695699211 2.084751797 -0.8647219339 2.084751797 -6.298358984 -0.07993941953 "
          "-0.8647219339 -0.07993941953 -4.093769452"},
    {"_mopt_ologit_d2(2, (1 \\ 2 \\ 3 \\ 2), X, (.4, -.3, -.2, .9), f, g, H, w); f, g",
     "R1,5:-8.869992894 -0.3614868387 1.811896861 -4.399117424 3.376797432"},
    {"H", "R4,4:-1.839191935 1.600884646 -0.09844042405 0.4849134561 1.600884646 -4.256805163 "
          "0.4227116633 -0.2556852769 -0.09844042405 0.4227116633 -5.099110587 3.739611991 "
          "0.4849134561 -0.2556852769 3.739611991 -4.923754864"},
    {"_mopt_oprobit_d2(2, (1 \\ 2 \\ 3 \\ 2), X, (.4, -.3, -.2, .9), f, g, H, w); f, g",
     "R1,5:-7.573083581 -1.210032937 4.22116817 -4.670618695 2.413228446"},
    {"H", "R4,4:-4.864341599 4.133210981 -0.6151623084 1.248033586 4.133210981 -10.66595687 "
          "2.018281337 -0.4207815574 -0.6151623084 2.018281337 -6.472053788 3.154973578 "
          "1.248033586 -0.4207815574 3.154973578 -5.687816223"},
    {"_mopt_mlogit_d2(2, (0 \\ 2 \\ 1 \\ 2), X, (.4, -.3, .2, -.5, .1, .6), f, g, H, w); f, g",
     "R1,7:-5.756376666 0.395269822 0.6516139778 -1.399410519 -0.4837841998 -1.299195999 "
     "1.991487607"},
    {"H[(1, 4, 6), ]",
     "R3,6:-1.222060711 0.4362817724 -0.6376471919 0.5753121765 -0.3172153309 0.2573064121 "
     "0.5753121765 -0.3172153309 0.2573064121 -1.044614205 0.8890823245 -0.1747139087 "
     "0.2573064121 -0.05226879731 0.7813243482 -0.1747139087 -0.3915227738 -1.445060867"},
    // an offset, no constant, one weight; what is not asked for stays
    {"g = 5; _mopt_logit_d2(0, 1, 2, .5, f, g, H, 3, .25, 0); (reldif(f, 3 * ln(1 / (1 + "
     "exp(-1.25)))) < 1e-15, g)",
     "R1,2:1 5"},
    // far out, where chances by subtraction are 0
    {"_mopt_probit_d2(1, 0, J(1, 0, .), 30, f, g, H); f, g", "R1,2:-454.321244 -30.03325967"},
    {"_mopt_ologit_d2(0, 2, 0, (0, -41, -40), f, g, H); f", "R1,1:-40.45867515"},
    {"_mopt_oprobit_d2(0, 2, 0, (0, 30, 31), f, g, H); f", "R1,1:-454.321244"},
    {"_mopt_ologit_d2(1, 2, 0, (0, 1, .5), f, g, H); f, g", "R1,4:. . . ."}, // cuts must rise
    {"_mopt_ologit_d2(1, 4, 0, (0, 1, 2), f, g, H); f", "R1,1:."},
    {"_mopt_logit_d2(1, (1 \\ .), J(2, 0, .), 0, f, g, H); f, g", "R1,2:. ."},
    {"_mopt_logit_d2(1, (1 \\ 0), (1 \\ 2), 0, f, g, H)", "3200"},
    {"_mopt_mlogit_d2(1, (1 \\ 0), (1 \\ 2), (0, 1, 2), f, g, H)", "3200"},
    {"_mopt_logit_d2(3, (1 \\ 0), (1 \\ 2), (0, 1), f, g, H)", "3300"},

    // by observation: the total, and the chain rule leads to the same derivatives
    {"y = (1 \\ 0 \\ 1 \\ 0); l = s = h = .; t = _mopt_logit_e2(2, y, _mopt_xb(X, (.4, -.3, .2)), "
     "l, s, h); "
     "_mopt_logit_d2(2, y, X, (.4, -.3, .2), f, g, H); "
     "(reldif(t, f), mreldif(_mopt_vecsum(X, s), g), mreldif(_mopt_matsum_xx(X, h), H)) :< 1e-14",
     "R1,3:1 1 1"},
    {"t = _mopt_probit_e2(2, y, _mopt_xb(X, (.4, -.3, .2)), l, s, h); "
     "_mopt_probit_d2(2, y, X, (.4, -.3, .2), f, g, H); "
     "(reldif(t, f), mreldif(_mopt_vecsum(X, s), g), mreldif(_mopt_matsum_xx(X, h), H)) :< 1e-14",
     "R1,3:1 1 1"},
    {"y = (0 \\ 2 \\ 1 \\ 2); b = (.4, -.3, .2 \\ -.5, .1, .6); t = _mopt_mlogit_e2(2, y, "
     "_mopt_xbmat(X, b), l, s, h); "
     "_mopt_mlogit_d2(2, y, X, (b[1, ], b[2, ]), f, g, H); "
     "(reldif(t, sum(l)), mreldif((_mopt_vecsum(X, s[, 1]), _mopt_vecsum(X, s[, 2])), g), "
     "mreldif(_mopt_matsum_xx(X, h[, 2]), H[4..6, 1..3])) :< 1e-14",
     "R1,3:1 1 1"},
    {"y = (1 \\ 2 \\ 3 \\ 2); t = _mopt_oprobit_e2(2, y, _mopt_xb(X, (.4, -.3), 0), (-.2, .9), l, "
     "s, h); "
     "_mopt_oprobit_d2(2, y, X, (.4, -.3, -.2, .9), f, g, H); "
     "(mreldif(_mopt_vecsum(X, s[, 1], 0), g[(1, 2)]), mreldif(colsum(s[, (2, 3)]), g[(3, 4)]), "
     "reldif(colsum(h[, 5]), H[4, 3]), mreldif(_mopt_vecsum(X, h[, 4], 0), H[4, (1, 2)])) :< 1e-14",
     "R1,4:1 1 1 1"},
    {"t = _mopt_ologit_e2(1, (1 \\ 5 \\ .), (0 \\ 0 \\ 0), (0, 1), l, s, h); t, l', s[2, ]",
     "R1,7:. -0.6931471806 . . . . ."},
    {"_mopt_ologit_e2(1, (1 \\ 2), (0 \\ 0 \\ 0), (0, 1), l, s, h)", "3200"},
    {"_mopt_logit_e2(1, \"a\", 0, l, s, h)", "3253"},
};

TEST(MosaMopt, Models)
{
    session();
    ASSERT_EQ(ms(X), 0);
    try_all(models);
}
