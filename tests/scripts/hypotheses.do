* tests of means, proportions, variances, ranks, distributions and normality; intervals
input x y g
5.1 4.9 1
6.2 5.8 1
5.8 6.1 1
7.0 6.4 1
4.4 4.0 2
5.0 4.7 2
6.6 6.0 2
7.7 7.1 2
5.9 . 2
5.9 6 3
6.0 6 3
end
gen b = x>5.5
gen b2 = y > 5.5 if y<.
ttest x == 5 if g < 3
display r(N) " " r(t) " " r(df_t) " " r(p) " " r(p_u) " " r(mu_1) " " r(sd_1) " " r(tau_b) " " r(se_score)
ttest x == y if g < 3
* the paired test is that of the differences
local t = r(t)
gen double d = x - y
quietly ttest d == 0 if g < 3
assert reldif(`t', r(t)) < 1e-6
ttest x == y, unpaired
ttest x if g < 3, by(g)
ttest x if g < 3, by(g) unequal
ttest x if g < 3, by(g) welch
display r(N) " " r(t) " " r(df_t) " " r(p) " " r(p_u) " " r(mu_1) " " r(sd_1) " " r(tau_b) " " r(se_score)
proptest b == .5
proptest b == b2
proptest b if g < 3, by(g)
vartest x == 1
vartest x == y
vartest x if g < 3, by(g)
* the F test is the same whichever group comes first
local p = r(p)
gen back = -g
quietly vartest x if g < 3, by(back)
assert reldif(`p', r(p)) < 1e-10
vartest x, by(g) robust
ranktest x if g<3, by(g)
ranktest x, by(g)
signedrank x == y
signedrank x == 6
rankcorr x y g
rankcorr x y, kendall
display r(N) " " r(t) " " r(df_t) " " r(p) " " r(p_u) " " r(mu_1) " " r(sd_1) " " r(tau_b) " " r(se_score)
normtest x y
confint x y
confint b, binomial
confint b, wilson
confint b, agresti
confint g, poisson level(90)
kstest x = normal((x-6)/.9)
kstest x if g<3, by(g)
foreach bad in "ttest x" "ttest x, by(y)" "ttest x == 5 if g > 5" "proptest x == .5" "signedrank x" ///
	"kstest x" "kstest x = 2*x" "ranktest x if g == 1, by(g)" {
	capture noisily `bad'
	display _rc
}
* weights of eleven men, for which W = .79 and its P = .0067 have been published
clear
input w
148
154
158
160
161
162
166
170
182
195
236
end
normtest w
