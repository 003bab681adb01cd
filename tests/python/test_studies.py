"""Calibration, uncertainty, sensitivity, sizing and fronts of the house whose truth is known."""
import dataclasses

import numpy
import pytest

import kesto

P = {"tank.size": (200, 8000), "roof.size": (20, 200)}
TRUTH = {"tank.size": 3000, "roof.size": 75}
LOSS = "brands.tiled_roof.evaporation_fraction"


def noisy(house, fraction, seed, **truth):
    """The overflow of the true house with Gaussian noise, a fraction of its standard deviation."""
    overflow = house.run({**TRUTH, **truth}).flows.sel(flow="tank:overflow").to_series()
    return overflow + numpy.random.default_rng(seed).normal(0, fraction * overflow.std(), len(overflow))


@pytest.fixture(scope="module")
def observed(house):
    return noisy(house, 0.05, 1)


@pytest.fixture(scope="module")
def found(house, observed):
    return house.calibrate(P, {"tank:overflow": observed}, metric="nse", warmup="365D", seed=1)


def test_two_parameters_are_recovered_from_noise(found):
    print(found)
    for key, truth in TRUTH.items():
        assert found.best[key] == pytest.approx(truth, rel=0.01)
    assert found.members <= 2000 and len(found.history) <= found.members
    assert not found.at_bounds and found.flat.empty
    assert abs(found.best["tank.size"] - 3000) < 4 * found.deviation["tank.size"] < 0.02 * 3000
    assert found.converged and "all parameters are known" in repr(found)


def test_the_metric_of_the_best_is_that_of_its_run(found, observed):
    run = found.run()
    simulated = run.flows.sel(flow="tank:overflow").values
    assert kesto.nse(simulated[365:], observed.to_numpy()[365:]) == pytest.approx(found.value, abs=1e-9)
    assert found.history["nse"].max() == found.value


def test_the_same_seed_gives_the_same_bits(house, observed):
    short = [house.calibrate(P, {"tank:overflow": observed}, max_members=60, seed=5, jobs=jobs) for jobs in (1, 2)]
    assert short[0].history.to_numpy().tobytes() == short[1].history.to_numpy().tobytes()
    assert short[0].best == short[1].best and short[0].members <= 60
    other = house.calibrate(P, {"tank:overflow": observed}, max_members=60, seed=6)
    assert other.best != short[0].best


def test_members_keep_to_their_limit_where_a_metric_is_undefined(house, monkeypatch):
    """The observations are looked at after the first generation, and no generation runs twice."""
    from kesto.objective import Batch

    ran = []
    sweep = Batch.sweep
    monkeypatch.setattr(Batch, "sweep", lambda self, table: ran.append(len(table)) or sweep(self, table))
    days = numpy.arange(1461.0)
    dry = {"series.rainfall.scale": 0.0}
    for observed, metric, text, options in (
            (days * 0 + 3, "nse", "nse is undefined: all observations of tank:overflow after the warm-up are 3", {}),
            (days * 0, "pbias", "pbias is undefined: the mean of the observations of tank:overflow is 0", {}),
            (days[:1], "kge", "kge is undefined: all observations", {"end": "2012-01-01"}),
            (days, "kge", "kge is undefined for all 8 members at the start: each simulates a flow that is the same", {"set": dry})):
        ran.clear()
        with pytest.raises(kesto.Error, match=text):
            house.calibrate(P, {"tank:overflow": observed}, metric=metric, max_members=60, seed=1, **options)
        assert sum(ran) <= 60
    found = house.calibrate(P, {"tank:overflow": days}, metric="nse", max_members=60, seed=1, set=dry)
    assert found.members <= 60


def test_the_best_runs_on_another_period_and_under_a_scenario(own_house, observed):
    with own_house.open("a") as file:
        file.write("\n[scenarios.dry]\nseries.rainfall.scale = 0.5\n")
    house = kesto.load(own_house)
    found = house.calibrate(P, {"tank:overflow": observed}, metric="nse", max_members=60, seed=1, start="2012-01-01",
                            end="2012-12-31", set={"roof.size": 3})
    for options in ({"start": "2013-01-01", "end": "2013-12-31"}, {"end": "2013-12-31"}, {"scenario": "dry"},
                    {"set": {"tank.size": 1, "garden.size": 10}, "record": "none"}):
        alone = {"end": "2012-12-31", **options, "set": {**options.get("set", {}), **found.best}}
        assert found.run(**options).figures.equals(house.run(**alone).figures)
    assert found.run(found.best).info["end"] == "2012-12-31"


def test_a_search_that_was_stopped_says_so(house, observed):
    found = house.calibrate(P, {"tank:overflow": observed}, metric="nse", max_members=60, seed=1)
    assert found.converged is False and "stopped at max_members before it converged" in repr(found)
    assert "all parameters are known" not in repr(found)


def test_what_cannot_be_known_is_said(house):
    """Only roof × (1 − loss) can be seen in the overflow."""
    three = {**P, LOSS: (0, 0.6)}
    observed = noisy(house, 0.15, 1, **{LOSS: 0.12})
    found = house.calibrate(three, {"tank:overflow": observed}, metric="nse", warmup=365, max_members=600, seed=1)
    print(found)
    assert found.correlation.loc["roof.size", LOSS] > 0.99
    assert len(found.flat) == 1
    # Along the flat direction roof × (1 − loss) stays: d roof / roof = d loss / (1 − loss).
    row = found.flat.iloc[0]
    assert row["roof.size"] / found.best["roof.size"] == pytest.approx(row[LOSS] / (1 - found.best[LOSS]), rel=0.1)
    seen = found.best["roof.size"] * (1 - found.best[LOSS])
    assert seen == pytest.approx(75 * 0.88, rel=0.02)
    one = dataclasses.replace(found, history=found.history[found.history["nse"] == found.value])  # which is no range
    assert "flat direction" in repr(one) and "fits as well" not in repr(one)
    for words in ("flat direction", "correlated by", "fits as well from"):
        assert words in repr(found)


def test_bounds_that_were_hit(house, observed):
    found = house.calibrate({"tank.size": (200, 8000), "roof.size": (20, 60)}, {"tank:overflow": observed}, seed=1,
                            metric="nse", max_members=300)
    assert found.at_bounds == {"roof.size": "high"} and "roof.size is at its high bound" in repr(found)


@pytest.mark.long
def test_dds_and_several_flows(house):
    run = house.run(TRUTH)
    flows = {name: run.flows.sel(flow=name) for name in ("tank:overflow", "tank:deficit")}
    found = house.calibrate(P, flows, metric="nse", method="dds", max_members=200, seed=2)
    assert found.value > 0.98 and found.members <= 200 and found.converged is None


def test_observations_with_gaps_and_without_dates(house, observed):
    gaps = observed.copy()
    gaps.iloc[::3] = numpy.nan
    part = gaps.loc["2014-01-01":"2014-12-31"]
    one = house.calibrate(P, {"tank:overflow": part}, max_members=60, seed=1)
    array = observed.to_numpy().copy()
    array[numpy.isnan(gaps)] = numpy.nan
    array[(observed.index < "2014-01-01") | (observed.index > "2014-12-31")] = numpy.nan
    two = house.calibrate(P, {"tank:overflow": array}, max_members=60, seed=1)
    assert one.best == two.best


@pytest.mark.parametrize("change, text", [
    ({"metric": "rmse"}, "no metric 'rmse'"), ({"method": "sce"}, "no method 'sce'"), ({"max_members": 5}, "at least 20"),
    ({"warmup": "2000D"}, "no observation of tank:overflow"), ({"observed": {}}, "nothing was observed"),
    ({"observed": {"tank:overflow": [1.0, 2.0]}}, "a value for each of the 1461 days"),
    ({"observed": {"tank": [1.0] * 1461}}, "must be the name of one flow")])
def test_questions_that_cannot_be_answered(house, observed, change, text):
    given = {"observed": {"tank:overflow": observed}, "max_members": 60, "seed": 1, **change}
    with pytest.raises(kesto.Error, match=text):
        house.calibrate(P, given.pop("observed"), **given)


@pytest.mark.parametrize("study", ["calibrate", "uncertainty"])
def test_observations_need_names(house, observed, study):
    with pytest.raises(TypeError, match="the observations are a Series; expected a mapping"):
        getattr(house, study)(P, observed)


def test_unknown_options(house, observed):
    with pytest.raises(TypeError, match="there is no option job"):
        house.calibrate(P, {"tank:overflow": observed}, job=3)


@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_uncertainty(house, observed):
    options = {"warmup": "365D", "seed": 1, "steps": 20, "walkers": 16}
    found = house.uncertainty(P, {"tank:overflow": observed}, **options)
    assert len(found.draws) == 10 * 16 and 0.1 < found.acceptance < 0.9
    low, high = found.draws["roof.size"].quantile([0.01, 0.99])
    assert low < 75 < high
    assert 0.7 < found.coverage(0.9, draws=40).iloc[0] <= 1
    bands = found.bands(0.9, draws=20)
    assert bands.dims == ("band", "flow", "time") and (bands.sel(band="low") <= bands.sel(band="high")).all()
    text = repr(found)
    assert "Gaussian errors" in text and "accepted" in text and "autocorrelation" in text
    assert found.too_short and "too short to trust" in text
    with pytest.raises(kesto.Error, match="even number"):
        house.uncertainty(P, {"tank:overflow": observed}, walkers=5)


@pytest.mark.long
@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_uncertainty_with_a_seed(house, observed):
    options = {"walkers": 8, "steps": 3, "burn": 0, "set": {"roof.size": 75}, "start": "2013-01-01", "end": "2013-12-31"}
    draws = [house.uncertainty({"tank.size": (200, 8000)}, {"tank:overflow": observed}, seed=seed, **options).draws
             for seed in (3, 3, 4)]
    assert draws[0].to_numpy().tobytes() == draws[1].to_numpy().tobytes() != draws[2].to_numpy().tobytes()


@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_the_likelihood_by_hand(house, observed):
    from kesto.objective import Batch, Fit
    from kesto.sweep import Plan
    from kesto.uncertainty import Likelihood

    for errors in ("absolute", "relative"):
        fit = Fit(Batch(Plan.of(house, record=["tank:overflow"])), P, {"tank:overflow": observed}, 365)
        likelihood = Likelihood(fit, errors)
        outside = numpy.array([[1.2, 0.5, 0.5], [0.5, 0.5, -0.1]])
        assert (likelihood.log(outside) == -numpy.inf).all()
        point = numpy.array([[0.3, 0.4, 0.25]])
        simulated = house.run({"tank.size": 200 + 0.3 * 7800, "roof.size": 20 + 0.4 * 180}).flows.sel(flow="tank:overflow")
        s, o = simulated.values[365:].astype(float), observed.to_numpy()[365:]
        deviation = 0.25 * 2 * (o.std() if errors == "absolute" else 1)
        sd = deviation * (1 if errors == "absolute" else numpy.maximum(abs(s), 0.01 * abs(o.mean()))) * numpy.ones(len(s))
        assert likelihood.log(point)[0] == pytest.approx(-(numpy.log(sd) + 0.5 * ((o - s) / sd) ** 2).sum(), rel=1e-9)


@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_deviations_at_their_limit_are_said(house):
    """Observations ten times as large as any that the model gives: the relative deviation cannot be as large as it is."""
    overflow = house.run(TRUTH, end="2012-12-31").flows.sel(flow="tank:overflow").to_series()
    options = {"walkers": 8, "steps": 10, "seed": 1, "end": "2012-12-31"}
    far = house.uncertainty(P, {"tank:overflow": 100 * overflow + 1}, errors="relative", **options)
    assert far.at_limits == ["deviation of tank:overflow"]
    assert "priors up to 2 (twice the simulated flow)" in repr(far)
    assert "deviation of tank:overflow is at its upper limit" in repr(far)
    near = house.uncertainty(P, {"tank:overflow": overflow}, **options)
    with pytest.raises(kesto.Error, match="level is 1.5; expected a fraction between 0 and 1"):
        near.bands(1.5)
    assert near.at_limits == [] and "is at its upper limit" not in repr(near)
    assert f"priors up to {2 * overflow.std(ddof=0):.6g} (twice the standard" in repr(near)


@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_an_interrupt_prints_nothing(house, observed, monkeypatch, capfd):
    from kesto.uncertainty import Likelihood

    def interrupted(self, points):
        raise KeyboardInterrupt

    monkeypatch.setattr(Likelihood, "log", interrupted)
    with pytest.raises(KeyboardInterrupt):
        house.uncertainty(P, {"tank:overflow": observed}, walkers=8, steps=4)
    assert capfd.readouterr() == ("", "")


@pytest.mark.filterwarnings("ignore::DeprecationWarning")
@pytest.mark.parametrize("change, text", [
    ({"steps": 0}, "steps is 0; expected a whole number from 1"), ({"walkers": 8.0}, "walkers is 8.0; expected a whole number"),
    ({"walkers": 7}, "walkers is 7; expected an even number of at least 6"), ({"burn": -1}, "burn is -1; expected a whole number from 0"),
    ({"burn": 9}, "burn is 9; expected a number from 0 to 3"), ({"errors": "x"}, "errors is 'x'")])
def test_chains_that_cannot_be(house, observed, change, text):
    with pytest.raises(kesto.Error, match=text):
        house.uncertainty(P, {"tank:overflow": observed}, **{"walkers": 8, "steps": 4, **change})


@pytest.mark.long
@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_bands_cover(house):
    """Of noisy observations, 90 % lie in bands of 90 %, and intervals of 90 % hold the truth most of the time."""
    observed = noisy(house, 0.1, 3)
    found = house.uncertainty(P, {"tank:overflow": observed}, warmup="365D", seed=1, steps=300)
    print(found)
    assert found.coverage(0.9).iloc[0] == pytest.approx(0.9, abs=0.03)
    low, high = found.draws["tank.size"].quantile([0.005, 0.995])
    assert low < 3000 < high
    deviation = 0.1 * house.run(TRUTH).flows.sel(flow="tank:overflow").values[365:].std()
    assert found.draws["deviation of tank:overflow"].median() == pytest.approx(deviation, rel=0.05)


def test_sensitivity(house):
    found = house.sensitivity(P, "tank:overflow", n=64, seed=1)
    assert len(found.sweep) == 64 * 4 and found.unit == "L"
    assert found.table.loc["roof.size", "total"] > 0.9 > 0.1 > found.table.loc["tank.size", "total"]
    same = house.sensitivity(P, "tank:overflow", n=64, seed=1, statistic=lambda days: days.sum(axis=1))
    assert numpy.allclose(same.table, found.table, atol=1e-6)
    screened = house.sensitivity(P, "tank.reliability_volume", n=8, method="morris", seed=1)
    assert (screened.table["mu"] > 0).all() and len(screened.sweep) == 24
    for one in (found, screened):
        assert one.plot().get_xlabel()
    with pytest.raises(kesto.Error, match="no figure or flow 'nothing'"):
        house.sensitivity(P, "nothing", n=2)


def test_sizing_curve(house):
    sizes = ["8 m3", "1 m3", "3 m3", "5 m3"]
    found = house.sizing_curve("tank.size", sizes, target=0.85)
    assert found.smallest == "5 m3" and found.figure == "tank.reliability_volume"
    assert found.curve["3 m3"] == house.run({"tank.size": "3 m3"}).figures["value"]["tank.reliability_volume"]
    assert found.plot().get_xlabel() == "tank.size, m3"
    assert house.sizing_curve("tank.size", [500, 1000], target=0.99).smallest is None
    for sizes, text in ((["8 m3", "1 m3", "3000 L", "500"], "'8 m3', '3000 L', '500'"), (["1 m3", 8000], "'1 m3', 8000")):
        with pytest.raises(kesto.Error, match=f"tank.size are in different units: {text}; expected texts with one unit"):
            house.sizing_curve("tank.size", sizes)
    assert house.sizing_curve("tank.size", [500, "6000"], target=0.9).smallest == "6000"
    with pytest.raises(kesto.Error, match="no figure 'roof.reliability_volume'"):
        house.sizing_curve("roof.size", [50, 100])


def test_pareto(house):
    found = house.pareto(P, minimise=["network.mains", "tank.size"], maximise=["tank.reliability_volume"], n=60, seed=1)
    aims = found.members[["network.mains", "tank.size", "tank.reliability_volume"]].to_numpy() * [1, 1, -1]
    assert found.members["front"].tolist() == kesto.non_dominated(aims).tolist()
    assert 1 < len(found.front) < 60 and found.units["network.mains"] == "L"
    assert found.plot().get_ylabel() == "tank.size"
    with pytest.raises(kesto.Error, match="two different aims"):
        house.pareto(P, minimise="tank.size", n=4)


def test_what_is_saved_is_a_figure_of_studies(own_house):
    own_house.write_text(own_house.read_text() + '''
[economics]
water_price = 2
baseline = "none"
horizon = 30
[scenarios.none]
tank.size = 0
tank.capital = 0
tank.capital_per_size = 0
''')
    house = kesto.load(own_house)
    capital = {"tank.capital": 900, "tank.capital_per_size": 0.3}
    sizes = [500, 1000, 4000]
    curve = house.sizing_curve("tank.size", sizes, target=10_000, figure="network.saved_mains", set=capital)
    for size in sizes:
        alone = house.run({"tank.size": size, **capital}).figures.loc["network.saved_mains", "value"]
        assert curve.curve[size] == alone
    assert curve.curve.is_monotonic_increasing and curve.curve[500] > 0
    found = house.pareto({"tank.size": (200, 8000)}, minimise="network.capital", maximise="network.saved_mains", n=8, seed=1,
                         set=capital)
    assert found.units == {"network.capital": "money", "network.saved_mains": "L"} and len(found.front) > 1
    assert found.members["network.saved_mains"].nunique() == 8


def test_plots_of_calibration_and_uncertainty(found, tmp_path):
    axes = found.plot()
    assert axes.get_ylabel() == "tank:overflow, L a day"
    axes.figure.savefig(tmp_path / "calibration.png")
