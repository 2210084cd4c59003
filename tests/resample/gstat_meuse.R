# gstat's figures for the meuse zinc data, which variogram_test.cpp stores: the
# experimental variogram with gstat's defaults, and the weighted least-squares fit
# (fit.method 7) of three models from the starting values the test uses too.
#   Rscript gstat_meuse.R meuse.csv
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
