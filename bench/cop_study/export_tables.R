#!/usr/bin/env Rscript
# Public tables for study.py as CSV: Rscript export_tables.R FOLDER
#
# Each file has the inputs first and the response as its last column. A factor becomes columns of
# 0 and 1, one for each level but the first; rows with a missing value are left out. The synthetic
# tables have fixed seeds. Packages that are not installed are named, their tables left out.
# (study.py adds the tables that come with scikit-learn.)

folder <- commandArgs(trailingOnly = TRUE)[1]
if (is.na(folder)) stop("Usage: export_tables.R FOLDER")
dir.create(folder, recursive = TRUE, showWarnings = FALSE)

Write <- function(name, inputs, response_name, response) {
  table <- data.frame(inputs, response)
  words <- gsub("[^A-Za-z0-9]+", "_", c(colnames(inputs), response_name))
  names(table) <- gsub("^_+|_+$", "", words)
  write.csv(format(table, digits = 15, trim = TRUE), file.path(folder, paste0(name, ".csv")),
            row.names = FALSE, quote = FALSE)
}

# Table `name`: `formula` on the data set `object` of `package`.
Export <- function(name, package, object, formula) {
  if (!requireNamespace(package, quietly = TRUE)) {
    message(name, ": no package ", package)
    return(invisible())
  }
  place <- new.env()
  # A collection of data sets may have the name of another one: ask for the collection, too.
  data(list = if (name == "state_x77") "state" else object, package = package, envir = place)
  frame <- model.frame(formula, as.data.frame(get(object, place)), na.action = na.omit)
  inputs <- model.matrix(formula, frame)[, -1, drop = FALSE]
  Write(name, inputs, deparse(formula[[2]]), model.response(frame))
}
# Ordered factors get 0/1 codes, too, no polynomials.
options(contrasts = c("contr.treatment", "contr.treatment"))

# Small tables, up to 60 rows.
Export("stackloss", "datasets", "stackloss", stack.loss ~ .)
Export("rock", "datasets", "rock", perm ~ .)
Export("state_x77", "datasets", "state.x77", `Life Exp` ~ .)
Export("mtcars", "datasets", "mtcars", mpg ~ .)
Export("cars", "datasets", "cars", dist ~ .)
Export("swiss", "datasets", "swiss", Fertility ~ .)
Export("longley", "datasets", "longley", Employed ~ .)
Export("trees", "datasets", "trees", Volume ~ .)
Export("attitude", "datasets", "attitude", rating ~ .)
Export("life_cycle_savings", "datasets", "LifeCycleSavings", sr ~ .)
Export("freeny", "datasets", "freeny", y ~ .)
Export("judge_ratings", "datasets", "USJudgeRatings", RTEN ~ .)
Export("arrests", "datasets", "USArrests", Murder ~ .)
Export("puromycin", "datasets", "Puromycin", rate ~ conc + state)
Export("pressure", "datasets", "pressure", pressure ~ .)
Export("tooth_growth", "datasets", "ToothGrowth", len ~ .)
Export("warpbreaks", "datasets", "warpbreaks", breaks ~ .)
Export("us_crime", "MASS", "UScrime", y ~ .)
Export("hills", "MASS", "hills", time ~ .)
Export("whiteside", "MASS", "whiteside", Gas ~ .)
Export("cement", "MASS", "cement", y ~ .)
Export("petrol", "MASS", "petrol", Y ~ SG + VP + V10 + EP)
Export("road", "MASS", "road", deaths ~ .)
Export("rubber", "MASS", "Rubber", loss ~ .)
Export("stormer", "MASS", "stormer", Time ~ .)
Export("topo", "MASS", "topo", z ~ .)
Export("cabbages", "MASS", "cabbages", VitC ~ .)
Export("aircraft", "robustbase", "aircraft", Y ~ .)
Export("alcohol", "robustbase", "alcohol", logSolubility ~ .)
Export("coleman", "robustbase", "coleman", Y ~ .)
Export("delivery", "robustbase", "delivery", delTime ~ .)
Export("education", "robustbase", "education", Y ~ X1 + X2 + X3)
Export("salinity", "robustbase", "salinity", Y ~ .)
Export("steam_use", "robustbase", "steamUse", Steam ~ .)
Export("toxicity", "robustbase", "toxicity", toxicity ~ .)
Export("wood", "robustbase", "wood", y ~ .)
Export("duncan", "carData", "Duncan", prestige ~ .)
Export("anscombe", "carData", "Anscombe", education ~ .)
Export("states", "carData", "States", SATM ~ pop + percent + dollars + pay)
Export("highway", "carData", "Highway1", rate ~ .)
Export("wool", "carData", "Wool", cycles ~ .)
Export("air_pollution", "HSAUR3", "USairpollution", SO2 ~ .)
Export("melanoma", "HSAUR3", "USmelanoma", mortality ~ .)
Export("clouds", "HSAUR3", "clouds", rainfall ~ .)
Export("nuclear", "boot", "nuclear", cost ~ . - cum.n)
Export("columbus", "mgcv", "columb", crime ~ home.value + income + open.space + x + y)

# 61 to 199 rows.
Export("airquality", "datasets", "airquality", Ozone ~ .)
Export("iris", "datasets", "iris", Petal.Width ~ .)
Export("birthwt", "MASS", "birthwt", bwt ~ age + lwt + factor(race) + smoke + ptl + ht + ui + ftv)
Export("cars93", "MASS", "Cars93",
       MPG.city ~ Price + EngineSize + Horsepower + RPM + Fuel.tank.capacity + Passengers +
         Length + Wheelbase + Width + Weight)
Export("cereal", "MASS", "UScereal",
       calories ~ protein + fat + sodium + fibre + carbo + sugars + potassium)
Export("mcycle", "MASS", "mcycle", accel ~ .)
Export("cats", "MASS", "cats", Hwt ~ .)
Export("ethanol", "lattice", "ethanol", NOx ~ .)
Export("prestige", "carData", "Prestige", prestige ~ education + income + women)
Export("leinhardt", "carData", "Leinhardt", log(infant) ~ log(income) + region + oil)
Export("freedman", "carData", "Freedman", crime ~ .)
Export("ericksen", "carData", "Ericksen", undercount ~ .)
Export("possum", "robustbase", "possumDiv",
       Diversity ~ Shrubs + Stumps + Stags + Bark + Habitat + BAcacia)
Export("pulp_fibre", "robustbase", "pulpfiber", Y1 ~ X1 + X2 + X3 + X4)

# 200 rows and more.
Export("faithful", "datasets", "faithful", waiting ~ .)
Export("quakes", "datasets", "quakes", mag ~ lat + long + depth + stations)
Export("boston", "MASS", "Boston", medv ~ .)
Export("cpus", "MASS", "cpus", perf ~ syct + mmin + mmax + cach + chmin + chmax)
Export("cpus_log", "MASS", "cpus", log(perf) ~ syct + mmin + mmax + cach + chmin + chmax)
Export("crabs", "MASS", "crabs", CW ~ sp + sex + FL + RW + BD)
Export("gag_urine", "MASS", "GAGurine", GAG ~ .)
Export("salaries", "carData", "Salaries", salary ~ .)
Export("ozone", "earth", "ozone1", O3 ~ .)
Export("concrete", "modeldata", "concrete", compressive_strength ~ .)
Export("biomass", "modeldata", "biomass", HHV ~ carbon + hydrogen + oxygen + nitrogen + sulfur)
Export("car_prices", "modeldata", "car_prices",
       Price ~ Mileage + Cylinder + Doors + Cruise + Sound + Leather + Buick + Cadillac + Chevy +
         Saab + convertible + wagon)
Export("penguins", "modeldata", "penguins", body_mass_g ~ . - island)
Export("meats", "modeldata", "meats",
       fat ~ x_005 + x_020 + x_035 + x_050 + x_065 + x_080 + x_095)

# Synthetic tables: uniform inputs in [0, 1], normal noise.
Synthetic <- function(name, rows, columns, seed, Response) {
  set.seed(seed)
  inputs <- matrix(runif(rows * columns), rows, dimnames = list(NULL, paste0("x", 1:columns)))
  Write(name, inputs, "y", Response(inputs))
}
Noise <- function(x) rnorm(nrow(x))
Synthetic("noise_50x5", 50, 5, 1, Noise)
Synthetic("noise_100x20", 100, 20, 2, Noise)
Synthetic("noise_300x10", 300, 10, 3, Noise)
# J. H. Friedman, "Multivariate adaptive regression splines", Annals of Statistics 19, 1991, (60).
Friedman <- function(sd) function(x)
  10 * sin(pi * x[, 1] * x[, 2]) + 20 * (x[, 3] - 0.5)^2 + 10 * x[, 4] + 5 * x[, 5] +
    rnorm(nrow(x), sd = sd)
Synthetic("friedman_40x5", 40, 5, 4, Friedman(1))
Synthetic("friedman_60x10", 60, 10, 5, Friedman(2))
Synthetic("friedman_300x10", 300, 10, 6, Friedman(1))
Synthetic("friedman_150x5_exact", 150, 5, 7, Friedman(0))
Synthetic("interaction_400x6_noisy", 400, 6, 8,
          function(x) x[, 1] * x[, 2] + sin(5 * x[, 3]) / 2 + rnorm(nrow(x), sd = 0.4))
Synthetic("sine_2000x5", 2000, 5, 9,
          function(x) sin(6 * x[, 1]) * x[, 2] + x[, 3]^2 + rnorm(nrow(x), sd = 0.1))
