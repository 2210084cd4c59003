# gstat's figures for the meuse zinc data, which variogram_test.cpp stores: the
# experimental variogram with gstat's defaults, and the weighted least-squares fit
# (fit.method 7) of three models from the starting values the test uses too.
#   Rscript tests/data/gstat_meuse.R ../shared/data/meuse.csv
suppressMessages(library(gstat)); suppressMessages(library(sp))
args <- commandArgs(trailingOnly = TRUE)
d <- read.csv(args[1])
coordinates(d) <- ~x + y
v <- variogram(zinc ~ 1, d)
options(digits = 17)
print(data.frame(np = v$np, dist = v$dist, gamma = v$gamma), digits = 17)
for (m in c("Sph", "Exp", "Gau")) {
  f <- fit.variogram(v, vgm(max(v$gamma) - min(v$gamma), m, max(v$dist) / 3, min(v$gamma)))
  cat(m, "nugget", f$psill[1], "psill", f$psill[2], "range", f$range[2], "sse", attr(f, "SSErr"), "\n")
}
# Leave-one-out cross-validation (krige.cv, global neighbourhood) with two fixed models:
# the summary, then every point's prediction and kriging variance.
for (m in list(vgm(150000, "Sph", 1000, 20000), vgm(150000, "Exp", 400, 20000))) {
  cv <- krige.cv(zinc ~ 1, d, m, verbose = FALSE)
  r <- cv$residual
  cat("cv", as.character(m$model[2]), sprintf("%.17g", c(mean(r), sqrt(mean(r^2)), mean(abs(r)), median(abs(r)), mean(cv$zscore^2))), "\n")
  cat(sprintf("%.17g %.17g\n", cv$var1.pred, cv$var1.var), sep = "")
}
