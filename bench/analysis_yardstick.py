"""Sobol' indices, FORM and importance sampling of OpenTURNS beside those of zel, both on the models
of a project, which the Python package evaluates.

    PYTHONPATH=python ZELSOLVER_LIBRARY=build/release/src/api/libzelsolver.so \\
        /usr/bin/python3 bench/analysis_yardstick.py build/release/cli/zel \\
            examples/zel_tenbar.vrdb examples/zel_tenbar_random.vrdb
"""

import json
import subprocess
import sys
import time

import numpy as np
import openturns as ot
import zelsolver

ROWS = 4096
STIFF = "stiff: displacement <= 5.5"


def zel(*arguments):
    start = time.perf_counter()
    text = subprocess.run([*arguments, "--json"], check=True, capture_output=True).stdout
    return json.loads(text), time.perf_counter() - start


def predictions(project, quantity):
    """Of one quantity, as OpenTURNS asks for it: rows of inputs to rows of one value."""
    def evaluate(x):
        solved = project.solve(np.asarray(x), criteria=True, extrapolate=True)
        return np.asarray(solved[quantity]).reshape(-1, 1)
    inputs = len(project.inputs)
    return ot.PythonFunction(inputs, 1, func_sample=evaluate, func=lambda x: evaluate([x])[0])


def compare_sensitivity(program, path):
    document, seconds = zel(program, "sensitivity", path, "--n", str(ROWS))
    worst = 0.0
    ot.RandomGenerator.SetSeed(1)
    with zelsolver.Project(path) as project:
        bounds = [project.bounds[name] for name in project.inputs]
        inputs = ot.ComposedDistribution([ot.Uniform(float(low), float(high))
                                          for low, high in bounds])
        own = 0.0
        for quantity, told in document["quantities"].items():
            if told["constant"]:
                continue
            start = time.perf_counter()
            experiment = ot.LowDiscrepancyExperiment(ot.SobolSequence(), inputs, ROWS)
            sample = ot.SobolIndicesExperiment(experiment).generate()
            values = predictions(project, quantity)(sample)
            indices = ot.JansenSensitivityAlgorithm(sample, values, ROWS)
            total = indices.getTotalOrderIndices()
            first = ot.SaltelliSensitivityAlgorithm(sample, values, ROWS).getFirstOrderIndices()
            own += time.perf_counter() - start
            for i, name in enumerate(project.inputs):
                worst = max(worst, abs(total[i] - told["total"][name]),
                            abs(first[i] - told["first"][name]))
    print(f"sensitivity: {len(document['quantities'])} quantities, largest difference of an index "
          f"{worst:.4f}; {seconds:.1f} s, OpenTURNS {own:.1f} s")


def compare_reliability(program, path):
    document, seconds = zel(program, "propagate", path, "--criterion", STIFF, "--until", "0.02")
    described, _ = zel(program, "info", path)
    marginals = []
    for entry in described["inputs"]:
        told = entry["distribution"]
        marginals.append(MAKERS[told["type"]](told["parameters"]))
    names = [entry["name"] for entry in described["inputs"]]
    correlation = ot.CorrelationMatrix(len(names))
    for entry in described["correlations"]:
        i, k = (names.index(name) for name in entry["inputs"])
        correlation[i, k] = normal_correlation(marginals[i], marginals[k], entry["coefficient"])
    copula = ot.NormalCopula(correlation)
    with zelsolver.Project(path) as project:
        for limit in document["limits"]:
            if document["limits"][limit]["beta"] is None or document["limits"][limit]["beta"] < 0:
                continue
            if limit == "stiff":
                displacement = predictions(project, "displacement")
                g = ot.ComposedFunction(ot.SymbolicFunction(["u"], ["5.5 - u"]), displacement)
            else:
                g = predictions(project, limit)
            steps = [1e-4 * marginal.getStandardDeviation()[0] for marginal in marginals]
            g.setGradient(ot.CenteredFiniteDifferenceGradient(steps, g.getEvaluation()))
            vector = ot.RandomVector(ot.ComposedDistribution(marginals, copula))
            event = ot.ThresholdEvent(ot.CompositeRandomVector(g, vector), ot.Less(), 0.0)
            start = time.perf_counter()
            form = ot.FORM(ot.AbdoRackwitz(), event, vector.getDistribution().getMean())
            form.run()
            found = form.getResult()
            point = found.getStandardSpaceDesignPoint()
            sampling = ot.ProbabilitySimulationAlgorithm(
                ot.StandardEvent(event),
                ot.ImportanceSamplingExperiment(ot.Normal(point, ot.CovarianceMatrix(len(names)))))
            sampling.setMaximumOuterSampling(200)
            sampling.setBlockSize(100)
            sampling.setMaximumCoefficientOfVariation(0.01)
            sampling.run()
            own = time.perf_counter() - start
            estimate = sampling.getResult().getProbabilityEstimate()
            told = document["limits"][limit]
            print(f"{limit}: beta {told['beta']:.4f}, "
                  f"OpenTURNS {found.getHasoferReliabilityIndex():.4f}; "
                  f"importance sampling {told['importance_sampling']['probability']:.4e} "
                  f"({told['low']:.4e} to {told['high']:.4e}), OpenTURNS {estimate:.4e}; "
                  f"{seconds:.2f} s for all, OpenTURNS {own:.2f} s")


MAKERS = {
    "NORMAL": lambda p: ot.Normal(p["Mean value mu"], p["Standard deviation s"]),
    "LOGNORMAL": lambda p: ot.LogNormal(p["Scale parameter mu"], p["Shape parameter s"]),
    "GUMBEL": lambda p: ot.Gumbel(p["Scale parameter beta"], p["Location parameter mu"]),
    "TRUNCATEDNORMAL": lambda p: ot.TruncatedNormal(
        p["Location parameter mu"], p["Scale parameter s"], p["Lower bound a"], p["Upper bound b"]),
}


def normal_correlation(a, b, wanted):
    """Of the normal variables behind two others with this linear correlation (Nataf), by
    Gauss-Hermite quadrature and bisection."""
    nodes, weights = np.polynomial.hermite_e.hermegauss(32)
    weights = weights / weights.sum()
    u, v = np.meshgrid(nodes, nodes, indexing="ij")
    both = np.outer(weights, weights)

    def quantiles(distribution, z):
        p = [[ot.DistFunc.pNormal(float(value))] for value in z.ravel()]
        return np.asarray(distribution.computeQuantile([q[0] for q in p])).reshape(z.shape)

    def correlation(rho):
        x, y = quantiles(a, u), quantiles(b, rho * u + np.sqrt(1.0 - rho * rho) * v)
        x, y = x - (both * x).sum(), y - (both * y).sum()
        return (both * x * y).sum() / np.sqrt((both * x * x).sum() * (both * y * y).sum())

    low, high = -0.99, 0.99
    for _ in range(40):
        middle = 0.5 * (low + high)
        low, high = (middle, high) if correlation(middle) < wanted else (low, middle)
    return middle


def main():
    program, deterministic, random = sys.argv[1:4]
    compare_sensitivity(program, deterministic)
    compare_reliability(program, random)


main()
