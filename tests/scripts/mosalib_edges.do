* Matrices without elements, with missing values, of zeros: every function has an answer.
version 12.1
set mosaoptimize on
mosa
E = J(0, 0, .)
svd(E,U=.,s=.,Vt=.)
svd(J(3,0,.),U=.,s=.,Vt=.); rows(U)
fullsvd(J(3,0,.),U=.,s=.,Vt=.); U
fullsvd(J(0,3,.),U=.,s=.,Vt=.); Vt
lusolve(E,J(0,3,.))
luinv(E)
eigenvalues(E); symeigenvalues(E); eigensystem(E,X=.,L=.)
cholinv(E); cholsolve(E,J(0,2,.)); cholesky(E)
qrd(E,Q=.,R=.); qrd(J(3,0,.),Q=.,R=.); Q; rows(R); qrd(J(0,3,.),Q=.,R=.); R
qrsolve(E,J(0,2,.)); qrsolve(J(3,0,.),J(3,2,1)); qrsolve(I(2),J(2,0,.)); svsolve(J(3,0,.),J(3,2,1)); pinv(J(3,0,.)); qrinv(E)
schurd(E,T=.,Q=.); hessenbergd(E,T=.,Q=.); gschurd(E,E,T=.,R=.,U=.,V=.,w=.,b=.); geigensystem(E,E,X=.,w=.,b=.)
real scalar yes(complex scalar z) return(1)
schurdgroupby(E,&yes(),T=.,Q=.,w=.,m=.); m
det(E); trace(E); rank(E); norm(E); cond(E); dettriangular(E)
polyroots(J(1,0,.)); fft(J(1,0,.)); polyeval(J(1,0,.),(1,2)); polytrim(J(1,0,.)); polyderiv(J(1,0,.),0)
spline3(J(1,0,.),J(1,0,.)); mean(E); variance(E); mean(J(3,0,.)); correlation(J(0,2,.)); meanvariance(J(1,2,3))
Hilbert(0); invHilbert(0); Toeplitz(J(0,1,.),J(1,0,.)); Vandermonde(J(0,1,.)); unitcircle(0); unitcircle(1); designmatrix(J(0,1,.)); vec(E); vech(E); invvech(J(0,1,.)); Dmatrix(0); Kmatrix(0,2); kron(E,I(2))
matpowersym(E,2); ftpad(J(1,0,.)); convolve(J(1,0,.),1); ftfreqs(J(1,0,.),1); ftunwrap(1); ftperiodogram(1); Corr(J(1,0,.),J(1,0,.),2)
solvelower(E,J(0,2,.)); lud(E,L=.,U=.,p=.)
eigenvalues((1,.\2,3)); lusolve((1,.\2,3),(1\2)); qrsolve((1,.\2,3),(1\2)); svsolve((1,.\2,3),(1\2)); cholinv((1,.\.,3)); symeigenvalues((1,.\.,3)); schurd((1,.\2,3),T=.,Q=.); T; hessenbergd((1,.\2,3),T=.,Q=.); geigensystem((1,.\2,3),I(2),X=.,w=.,b=.); w; matpowersym((1,.\.,3),2); qrd((1,.\2,3),Q=.,R=.); R; fullsvd((1,.\2,3),U=.,s=.,Vt=.); s; pinv((1,.\2,3)); rank((1,.)); cond((1,.)); norm((1,.)); polyroots((1,.)); fft((1,.)); convolve((1,.),(1,1)); spline3eval(spline3((1,2,3),(1,.,2)),2.5); lud((1,.\2,3),L=.,U=.,p=.); p
polyroots((0,0,1)); polyroots((0,0)); polyroots(5); eigenvalues(J(2,2,0)); svdsv(J(2,2,0)); pinv(J(2,3,0)); qrsolve(J(3,2,0),(1\1\1)); symeigenvalues(1); eigenvalues(1i); geigensystem(J(2,2,0),J(2,2,0),X=.,w=.,b=.); w; b; cond(J(2,2,0)); eigenvalues(1e300*I(2)); norm(1e300*J(3,3,1)); det(1e200*I(2))
end
