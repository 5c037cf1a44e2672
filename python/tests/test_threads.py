"""Threads, processes, and memory over many calls."""

import concurrent.futures
import gc
import multiprocessing
import os
import shutil
import threading

import numpy as np
import pytest
import zelsolver
from conftest import SAMPLE, Plate, assert_plate, truss_designs


def resident():
    """Bytes of this process in memory."""
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * 4096


def test_threads_share_projects(plate, truss):
    # Failing calls among them: each thread must find its own error text.
    areas = truss_designs(30)
    expected = truss.solve(areas, errors=True)

    def work(number):
        for i in range(40):
            designs = Plate.designs(20, seed=number)
            assert_plate(plate.solve(designs), designs)
            if number % 2:
                solution = truss.solve(areas, errors=True)
                np.testing.assert_array_equal(solution["cost"], expected["cost"])
                np.testing.assert_array_equal(solution.errors["mass"].rmse,
                                              expected.errors["mass"].rmse)
            designs[7, 1] = 2 + number
            with pytest.raises(zelsolver.BoundsError, match=f"^Value {2 + number} of Parameter y "):
                plate.gradients(designs, "mass")
            name = f"none {number} {i}"
            with pytest.raises(zelsolver.UnknownNameError, match=name):
                plate.reference_value(name)
            with zelsolver.Project(Plate.path) as other:
                assert other.inputs == Plate.inputs

    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        for result in [pool.submit(work, number) for number in range(8)]:
            result.result()


def test_the_number_of_threads_is_set_for_calls_to_come():
    areas = truss_designs(3000)
    with zelsolver.Project(SAMPLE) as project:
        try:
            solutions = []
            for number in (1, 2, None):
                zelsolver.set_num_threads(number)
                assert os.environ.get("ZELSOLVER_NUM_THREADS") == (number and str(number))
                solutions.append(project.solve(areas, criteria=False)["mass"])
            for wrong in (0, -1, 1.5, 1025, float("nan")):
                with pytest.raises(ValueError):
                    zelsolver.set_num_threads(wrong)
        finally:
            zelsolver.set_num_threads()
    for solution in solutions:
        np.testing.assert_array_equal(solution, solutions[0])


def test_closing_lets_the_call_of_another_thread_finish():
    areas = truss_designs(2000)
    project = zelsolver.Project(SAMPLE)
    expected = project.solve(areas, criteria=False)["mass"]
    started, outcomes = threading.Event(), []

    def work():
        started.set()
        try:
            while True:
                outcomes.append(project.solve(areas, criteria=False)["mass"])
        except zelsolver.ClosedError as error:
            outcomes.append(error)

    thread = threading.Thread(target=work)
    thread.start()
    started.wait()
    project.close()
    thread.join(60)
    assert isinstance(outcomes.pop(), zelsolver.ClosedError)
    for mass in outcomes:
        np.testing.assert_array_equal(mass, expected)


def test_a_forked_process_may_call_while_threads_of_its_parent_do(plate):
    designs = Plate.designs(5)
    stop = threading.Event()

    def work():
        while not stop.is_set():
            plate.solve(Plate.designs(3000))

    def child(connection):
        connection.send(dict(plate.solve(designs)))

    thread = threading.Thread(target=work)
    thread.start()
    try:
        for _ in range(5):
            here, there = multiprocessing.Pipe()
            process = multiprocessing.get_context("fork").Process(target=child, args=(there,))
            process.start()
            try:
                assert here.poll(30), "the child hangs"
                assert_plate(here.recv(), designs)
            finally:
                process.kill()
                process.join()
    finally:
        stop.set()
        thread.join()


def test_projects_without_references_are_closed():
    opened = zelsolver.handle._open_files
    project = zelsolver.Project(Plate.path)
    cycle = [project]
    cycle.append(cycle)
    assert sum(opened._users.values()) == 1
    del project, cycle
    gc.collect()
    assert not opened._users and not opened._opened
    # Collected while a call runs: the next opening or closing does it.
    project = zelsolver.Project(Plate.path)
    with zelsolver.library.get_library().lock:
        del project
        assert opened.dropped
    with zelsolver.Project(SAMPLE):
        assert len(opened._opened) == 1


def grows_by(action, times):
    """Bytes that a warmed-up process grows by."""
    for _ in range(times // 4):
        action()
    gc.collect()
    before = resident()
    for _ in range(times):
        action()
    gc.collect()
    return resident() - before


def test_repeated_calls_do_not_grow(truss, plate):
    # A result of `solve` is 38 KB, the designs 32 KB: 6 MB in all calls. The allocator keeps pages.
    designs = truss_designs(400)
    few = truss_designs(3)

    def calls():
        truss.solve(designs, criteria=False)
        truss.solve(few, errors=True, density=True)
        truss.gradients(few, "mass")
        truss.cop("mass")
        with pytest.raises(zelsolver.BoundsError):
            truss.solve(few * 100)
        with pytest.raises(zelsolver.InputError):
            truss.solve(few.T)

    assert grows_by(calls, 200) < 3e6


def test_opening_and_closing_does_not_grow(tmp_path):
    # The sample takes about 1 MB when open: 60 that stay would be seen.
    for i in range(30):
        shutil.copy(SAMPLE, tmp_path / f"{i}.vrdb")
    numbers = iter(range(10**6))

    def open_one():
        with zelsolver.Project(tmp_path / f"{next(numbers) % 30}.vrdb") as project:
            assert project.cop("mass") > 0.9

    assert grows_by(open_one, 60) < 8e6
    with zelsolver.Project(Plate.path):  # while another one stays open, too
        assert grows_by(open_one, 60) < 8e6
